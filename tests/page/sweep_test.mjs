// The page of a sweep in a browser: sweep_test.mjs PROGRAM FOLDER [TEST]

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { expectClean, expectReadable, prepared, runTests } from './browser.mjs';

const [, , program, folder, only] = process.argv;
const browser = prepared(folder);

const bars = path.join(folder, 'A.X.csv');
const lines = ['datetime,open,high,low,close,volume'];
for (let hour = 0; hour < 24 * 28; ++hour) {
  const at = (shift) => (1000 + 60 * Math.sin((hour + shift) / 9) +
    25 * Math.sin((hour + shift) / 31)).toFixed(2);
  const values = [at(-1), at(0)].map(Number);
  lines.push([`2021-02-${String(1 + Math.floor(hour / 24)).padStart(2, '0')} ` +
    `${String(hour % 24).padStart(2, '0')}:00:00`, at(-1), (Math.max(...values) + 1).toFixed(2),
  (Math.min(...values) - 1).toFixed(2), at(0), 100].join(','));
}
writeFileSync(bars, `${lines.join('\n')}\n`);

const USUAL = ['--grid', 'fast=2:6:1', '--grid', 'slow=4:12:2', '--where', 'fast<slow'];

/** Runs a sweep, of the usual grid unless it brings its own, and answers its page's address and the
 *  rows of its table. */
function sweep(name, more, { grid = USUAL, code = 0 } = {}) {
  const out = path.join(folder, name);
  const ended = spawnSync(program, ['sweep', '-s', 'sma_cross', '-b', bars, '--out', out, '-q',
    ...grid, ...more]);
  assert.equal(ended.status, code, String(ended.stderr));
  const [head, ...rest] = readFileSync(path.join(out, 'results.csv'), 'utf8').trim().split('\n')
    // Messages stand in quotes, and no other field has any.
    .map((line) => line.replaceAll('""', "''").replace(/"[^"]*"/g, '-').split(','));
  return {
    rows: rest.map((fields) => Object.fromEntries(fields.map((field, i) => [head[i], field]))),
    url: pathToFileURL(path.join(out, 'sweep.html')).href,
  };
}

const cells = '.map td.heat';
const tableRows = 'Array.from(document.querySelectorAll(".table tbody tr[data-row]"))';
const many = (selector) => `document.querySelectorAll(${JSON.stringify(selector)}).length`;
const text = (selector) => `document.querySelector(${JSON.stringify(selector)}).textContent`;

const tests = {
  async shouldShowEachCombinationInTheMapAndItsRunsOnAClick() {
    const { rows, url } = sweep('plain', []);
    const page = await browser.open(url);
    assert.equal(await page.value(many(cells)), rows.length);
    assert.equal(await page.value(`${tableRows}.length`), rows.length);
    const best = rows[0];
    const title = await page.value('document.querySelector(".map td.best").title');
    assert.ok(title.startsWith(`slow ${best.slow}, fast ${best.fast}: `), title);
    await page.click('.map td.best button');
    assert.equal(await page.value(`${tableRows}.length`), 1);
    assert.equal(await page.value(`${tableRows}[0].children[1].textContent`), best.number);
    assert.equal(await page.value(text('.chosen-run')), `No. ${best.number} ` +
      `fast ${best.fast}, slow ${best.slow}: Stopped. By hand: ` +
      `--name sma_cross-${best.number} ` +
      `--params '{"fast":${best.fast},"slow":${best.slow}}'`);
    assert.ok(await page.value('document.querySelector(".map td.best").matches(".marked")'));
    await page.click('.card .toggle');
    assert.equal(await page.value(`${tableRows}.length`), rows.length);
    expectClean(page, url);
    await page.close();
  },

  async shouldMarkTheCellOfARowThatIsChosenInLightAndDark() {
    const { rows, url } = sweep('rows', []);
    for (const scheme of ['light', 'dark']) {
      const page = await browser.open(url, { scheme });
      await page.click('.table tbody tr[data-row="2"] td');
      const { fast, slow } = rows[2];
      const marked = await page.value('document.querySelector(".map td.marked").title');
      assert.ok(marked.startsWith(`slow ${slow}, fast ${fast}: `), marked);
      assert.equal(await page.value(many('.map td.marked')), 1);
      assert.ok((await page.value(text('.chosen-run'))).startsWith(`No. ${rows[2].number} `));
      const colours = await page.value(`Array.from(document.querySelectorAll('${cells}'), (cell) =>
        getComputedStyle(cell).backgroundColor)`);
      assert.ok(new Set(colours).size > 5);
      await expectReadable(page);
      expectClean(page, url);
      await page.close();
    }
  },

  async shouldShowWhereAllRunsOfACellEndedAsErrors() {
    const { rows, url } = sweep('errors', [],
      { grid: ['--grid', 'fast=11:12:1', '--grid', 'slow=12,13'], code: 1 });
    assert.deepEqual(rows.map((row) => row.status), ['Stopped', 'Stopped', 'Stopped', 'Error']);
    const page = await browser.open(url);
    assert.equal(await page.value(many(cells)), 3);
    assert.equal(await page.value(many('.map td.bad')), 1);
    await page.click('.map td.bad button');
    assert.ok((await page.value(text('.chosen-run'))).includes('Error, parameter "fast" (12)'));
    expectClean(page, url);
    await page.close();
  },

  async shouldShowWhatWentWrongInTheTableAndTilesInOneRow() {
    const { rows, url } = sweep('messages', ['--params', '{"slow":2}'],
      { grid: ['--grid', 'fast=1:3:1'], code: 1 });
    assert.deepEqual(rows.map((row) => row.status), ['Stopped', 'Error', 'Error']);
    const page = await browser.open(url, { width: 1500 });
    const cellsOf = (title) => page.value(`(() => {
      const heads = Array.from(document.querySelectorAll('.table thead th'), (head) =>
        head.textContent);
      return ${tableRows}.map((row) => row.children[heads.indexOf('${title}')].textContent);
    })()`);
    const refused = (fast) => `parameter "fast" (${fast}) must be below "slow" (2)`;
    assert.deepEqual(await cellsOf('Message'), ['', refused(2), refused(3)]);
    const tiles = await page.value(`Array.from(document.querySelectorAll('.tile'), (tile) => [
      tile.firstChild.textContent, tile.lastChild.textContent, tile.getBoundingClientRect().top,
    ])`);
    assert.equal(new Set(tiles.map(([, , top]) => top)).size, 1, JSON.stringify(tiles));
    assert.deepEqual(tiles.find(([label]) => label === 'Errors').slice(0, 2),
      ['Errors', 'their message is in the table']);
    expectClean(page, url);
    await page.close();

    const { url: good } = sweep('no-messages', []);
    const plain = await browser.open(good);
    assert.ok(!(await plain.value(text('.table thead'))).includes('Message'));
    expectClean(plain, good);
    await plain.close();
  },

  async shouldTakeTheParametersAndTheFigureThatAreChosen() {
    const { rows, url } = sweep('three', ['--grid', 'mode=longOnly,longShort']);
    const page = await browser.open(url);
    const choose = async (label, value) => page.value(`(() => {
      const select = document.querySelector('[aria-label="${label}"]');
      select.value = ${JSON.stringify(String(value))};
      select.dispatchEvent(new Event('change'));
    })()`);
    const pairs = new Set(rows.map((row) => `${row.fast} ${row.slow}`));
    assert.equal(await page.value(many(cells)), pairs.size);
    await choose('Across', 2);
    await choose('Figure', 8);
    const fills = (mode, fast) => Math.max(...rows
      .filter((row) => row.mode === mode && row.fast === fast).map((row) => Number(row.fills)));
    assert.equal(await page.value(many(cells)), 10);
    assert.equal(await page.value(`Array.from(document.querySelectorAll('.map td.heat'))
      .find((cell) => cell.title.startsWith('mode longShort, fast 3: '))
      .querySelector('button').textContent`), String(fills('longShort', '3')));
    expectClean(page, url);
    await page.close();
  },

  async shouldShowTheBestCellOfAWideMapOnADeskAndOnAPhone() {
    // The best is the last of them.
    const slow = Array.from({ length: 79 }, (_, at) => 160 - 2 * at);
    const { rows, url } = sweep('wide', [],
      { grid: ['--grid', 'fast=2:3:1', '--grid', `slow=${slow}`] });
    assert.equal(rows[0].slow, '4');
    for (const width of [1500, 400]) {
      const page = await browser.open(url, { width });
      const placesOf = ['.map-body .scroll-x', '.map .best'];
      const [box, best] = await page.value(`${JSON.stringify(placesOf)}.map((selector) => {
        const {left, right} = document.querySelector(selector).getBoundingClientRect();
        return {left, right};
      })`);
      assert.ok(best.left >= box.left && best.right <= box.right,
        `${JSON.stringify(best)} is beyond ${JSON.stringify(box)}`);
      const wanted = await page.value(`(() => {
        const box = document.querySelector('.map-body .scroll-x');
        return box.scrollWidth - box.clientWidth;
      })()`);
      assert.equal(wanted > 0, width === 400, `${wanted} pixels of the map are beyond its box`);
      await expectReadable(page);
      expectClean(page, url);
      await page.close();
    }
  },

  async shouldTellInSampleAndOutOfSampleApart() {
    const { rows, url } = sweep('walk', ['--walk-forward', '10d:5d']);
    const page = await browser.open(url, { scheme: 'dark' });
    const windows = rows.filter((row) => row.sample === 'out-of-sample').length;
    assert.equal(windows, 4);
    assert.equal(await page.value(many('.windows tr.in-sample')), windows);
    assert.equal(await page.value(many('.windows tr.out-of-sample')), windows);
    const chosen = rows.find((row) => row.sample === 'out-of-sample');
    assert.ok((await page.value(text('.windows tr.out-of-sample')))
      .includes(`fast ${chosen.fast}, slow ${chosen.slow}`));
    const inSample = rows.filter((row) => row.sample === 'in-sample' && row.window === '1');
    assert.equal(await page.value(many(cells)), inSample.length);
    await page.click('.map td.best button');
    const byHand = await page.value(text('.chosen-run'));
    assert.match(byHand, /--name sma_cross-\d+ --params '\S+' --from \S+Z --to \S+Z, in place of /);
    expectClean(page, url);
    await page.close();
  },
};

await runTests(browser, tests, only);
