// The page of a sweep in a browser: sweep_test.mjs PROGRAM FOLDER

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { Browser, findBrowser } from './browser.mjs';

const [, , program, folder] = process.argv;
const SKIPPED = 77;

const found = findBrowser();
if (!found) {
  console.log('SKIPPED: there is no chromium here; scripts/deps installs it');
  process.exit(SKIPPED);
}

rmSync(folder, { recursive: true, force: true });
mkdirSync(folder, { recursive: true });
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

/** Runs a sweep and answers its page's address and the rows of its table. */
function sweep(name, more) {
  const out = path.join(folder, name);
  execFileSync(program, ['sweep', '-s', 'sma_cross', '-b', bars, '--out', out, '-q',
    '--grid', 'fast=2:6:1', '--grid', 'slow=4:12:2', '--where', 'fast<slow', ...more]);
  const [head, ...rest] = readFileSync(path.join(out, 'results.csv'), 'utf8').trim().split('\n')
    .map((line) => line.split(','));
  return {
    rows: rest.map((fields) => Object.fromEntries(fields.map((field, i) => [head[i], field]))),
    url: pathToFileURL(path.join(out, 'sweep.html')).href,
  };
}

const browser = new Browser(found);
const cells = '.map td.heat';
const tableRows = 'Array.from(document.querySelectorAll(".table tbody tr[data-row]"))';
const many = (selector) => `document.querySelectorAll(${JSON.stringify(selector)}).length`;
const text = (selector) => `document.querySelector(${JSON.stringify(selector)}).textContent`;

async function expectClean(page, url) {
  assert.deepEqual(page.errors, [], 'the page complained');
  assert.deepEqual(page.requests.filter((asked) => asked.split('#')[0] !== url), []);
}

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
    await page.click('.card .toggle');
    assert.equal(await page.value(`${tableRows}.length`), rows.length);
    await expectClean(page, url);
    await page.close();
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
    await expectClean(page, url);
    await page.close();
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
    await expectClean(page, url);
    await page.close();
  },
};

let failures = 0;
for (const [name, test] of Object.entries(tests)) {
  try {
    await test();
    console.log(`ok      ${name}`);
  } catch (error) {
    ++failures;
    console.log(`FAILED  ${name}: ${error.stack}`);
  }
}
await browser.close();
process.exit(failures === 0 ? 0 : 1);
