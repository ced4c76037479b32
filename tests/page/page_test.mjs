// The report's page in a browser: page_test.mjs PROGRAM FOLDER [TEST]

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { expectClean, expectReadable, prepared, runTests } from './browser.mjs';

const [, , program, folder, only] = process.argv;
const browser = prepared(folder);

/** How prices swing and drift. */
const swing = (at) => 40 * Math.sin(at / 37) + 15 * Math.sin(at / 11) + at / 60;

/** Bars of two weeks, a minute each. The same at every run. */
function writeBars(file, base, priceAt = swing) {
  const lines = ['datetime,open,high,low,close,volume'];
  let price = base;
  for (let day = 4; day < 16; ++day) {
    for (let minute = 0; minute < 240; ++minute) {
      const open = price;
      const at = day * 240 + minute;
      price = base + priceAt(at);
      const cents = (value) => value.toFixed(2);
      const clock = `${String(9 + Math.floor(minute / 60)).padStart(2, '0')}:` +
        `${String(minute % 60).padStart(2, '0')}:00`;
      lines.push([`2021-01-${String(day).padStart(2, '0')} ${clock}`, cents(open),
        cents(Math.max(open, price) + 0.5), cents(Math.min(open, price) - 0.5), cents(price),
        100 + at % 50].join(','));
    }
  }
  writeFileSync(file, `${lines.join('\n')}\n`);
}

/** Runs the command and answers its report and the page's address. */
function run(name, config) {
  const report = path.join(folder, name);
  const file = path.join(folder, `${name}.json`);
  writeFileSync(file, JSON.stringify(config));
  execFileSync(program, ['run', file, '--report', report, '-q', '--strategy-log-level', 'off']);
  return {
    report: JSON.parse(readFileSync(path.join(report, 'report.json'), 'utf8')),
    url: pathToFileURL(path.join(report, 'report.html')).href,
  };
}

const bars = path.join(folder, 'A.X.csv');
writeBars(bars, 1000);
const more = path.join(folder, 'B.X.csv');
writeBars(more, 500);
const oneSeries = [{ file: bars, code: 'A.X' }];
const crossing = (name, slow) => ({ name, strategy: 'sma_cross',
  params: { fast: 5, slow, mode: 'longShort' } });

const text = (selector) => `document.querySelector(${JSON.stringify(selector)}).textContent`;
const rows = 'Array.from(document.querySelectorAll(".trades tbody tr[data-row]"))';
const column = (at) => `${rows}.map((row) => row.children[${at}].textContent)`;
const headButton = (at) => `.trades thead th:nth-child(${at + 1}) button`;
const SIDE = 3, PROFIT = 9;

/** The large figures by their names. */
function tilesOf(page) {
  return page.value(`Object.fromEntries(Array.from(document.querySelectorAll('.tile'), (tile) => {
    const [label, value, below] = tile.children;
    return [label.textContent, {value: value.textContent, className: value.className,
      below: below.textContent, title: tile.title}];
  }))`);
}

/** The begin and the end of what the chart shows. */
async function range(page) {
  return (await page.value(text('.range'))).split(' – ');
}

/** How many pixels of the chart are not empty. */
const painted = `Array.from(document.querySelectorAll('.chart canvas')).reduce((sum, canvas) => {
  if (!canvas.width || !canvas.height) return sum;
  const {data} = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
  for (let i = 3; i < data.length; i += 4) sum += data[i] !== 0;
  return sum;
}, 0)`;

const tests = {
  async shouldZoomAndPanAndShowAllAgain() {
    const { url } = run('one', { runners: [crossing('one', 20)], bars: oneSeries });
    const page = await browser.open(url);
    assert.ok(await page.value(painted) > 20000, 'the chart is empty');
    const all = await range(page);
    await page.wheel('.chart', -600);
    const near = await range(page);
    assert.ok(near[0] > all[0] && near[1] <= all[1], `${near} is not within ${all}`);
    await page.drag('.chart', 300);
    const earlier = await range(page);
    assert.ok(earlier[0] < near[0] && earlier[1] < near[1], `${earlier} is not before ${near}`);
    await page.click('.chart-tools [aria-label="Span"] button:last-child');
    assert.deepEqual(await range(page), all);
    expectClean(page, url);
    await page.close();
  },

  async shouldShowTheTradeOfARowInTheChart() {
    const { url, report } = run('rows', { runners: [crossing('one', 20)], bars: oneSeries });
    const { trades } = report.runners[0].trading;
    assert.ok(trades.length > 60, `only ${trades.length} trades`);
    const page = await browser.open(url);
    const drawn = await page.value(`${rows}.length`);
    assert.ok(drawn < trades.length && drawn > 10, `${drawn} rows of ${trades.length} are drawn`);
    await page.click('.trades tr[data-row="7"]');
    const at = trades[7].time.replace('T', ' ').slice(0, 16);
    const [from, to] = await range(page);
    assert.ok(from <= at && at <= to, `${at} is not within ${from} and ${to}`);
    assert.equal(await page.value('document.querySelector(".chart").dataset.trade'), '7');
    assert.equal(await page.value(
      'document.querySelector(".trades tr[aria-selected=true]").dataset.row'), '7');
    await page.click('.stepper button:last-child');
    assert.equal(await page.value('document.querySelector(".chart").dataset.trade'), '8');
    await page.click('.trades tr[data-row="0"]');
    const [, end] = await range(page);
    const last = readFileSync(bars, 'utf8').split('\n').find((line) => line.startsWith(end));
    const open = Number(last.split(',')[1]);
    assert.equal(await page.value(text('.legend span')),
      `O${open.toLocaleString('en-US', { minimumFractionDigits: 2 })}`, 'of the last bar in view');
    const count = parseInt(await page.value('document.querySelector(".range").title'), 10);
    assert.ok(count > 140, `only ${count} candles are in view`);
    expectClean(page, url);
    await page.close();
  },

  async shouldSortAndFilterTrades() {
    const { url, report } = run('sorted', { runners: [crossing('one', 20)], bars: oneSeries });
    const { trades } = report.runners[0].trading;
    const profits = trades.filter((trade) => trade.offset !== 'open').map((trade) => trade.profit);
    const page = await browser.open(url);
    const first = async () => Number((await page.value(`${column(PROFIT)}[0]`))
      .replace('\u2212', '-').replace(/[+,]/g, ''));
    const near = (value, wanted) => assert.ok(Math.abs(value - wanted) < 0.006,
      `${value} is not ${wanted}`);
    await page.click(headButton(PROFIT));
    near(await first(), Math.max(...profits));
    await page.click(headButton(PROFIT));
    near(await first(), Math.min(...profits));
    assert.equal(await page.value(
      `document.querySelectorAll('.trades th')[${PROFIT}].getAttribute('aria-sort')`), 'ascending');
    await page.click('[aria-label="Side"] [data-value="0"]');
    const sells = trades.filter((trade) => trade.side === 'sell').length;
    assert.deepEqual(await page.value(`[...new Set(${column(SIDE)})]`), ['Sell']);
    assert.ok((await page.value(text('.summary'))).startsWith(`${sells} of ${trades.length} `));
    await page.type('[aria-label="Find trades"]', String(trades[3].order));
    const shown = trades.filter((trade) => trade.side === 'sell' &&
      String(trade.order).includes(String(trades[3].order))).length;
    assert.equal(await page.value(`${rows}.length`), shown);
    expectClean(page, url);
    await page.close();
  },

  async shouldHideTheMarksThatWouldHideTheCandles() {
    const file = path.join(folder, 'Z.X.csv');
    writeBars(file, 1000, (at) => 3 * (Math.floor(at / 2) % 2));
    const { url, report } = run('crowded', { runners: [{ name: 'crowded', strategy: 'sma_cross',
      params: { fast: 1, slow: 2, mode: 'longShort' } }], bars: [{ file, code: 'Z.X' }] });
    const { length } = report.runners[0].trading.trades;
    assert.ok(length > 2000, `only ${length} trades`);
    const page = await browser.open(url);
    assert.equal(await page.value(text('.hidden-marks')),
      `${length.toLocaleString('en-US')} trades in view: zoom in for their marks`);
    await page.click('.trades tr[data-row="7"]');
    await page.frames();
    assert.equal(await page.value('document.querySelector(".hidden-marks")'), null);
    expectClean(page, url);
    await page.close();
  },

  async shouldGiveNoSignAndNoColourToWhatReadsAsZero() {
    const { url, report } = run('rich', { runners: [crossing('rich', 20)], bars: oneSeries,
      capital: 1000000000000 });
    const { figures } = report.runners[0].trading;
    assert.ok(figures.return !== 0 && figures.maxDrawdown.share > 0, JSON.stringify(figures));
    const page = await browser.open(url);
    const tiles = await tilesOf(page);
    for (const label of ['Return', 'Max drawdown'])
      assert.deepEqual([tiles[label].value, tiles[label].className], ['0.00%', 'tile-value']);
    assert.equal(await page.value(text('.months td.heat')), '≈0');
    assert.equal(await page.value(`document.querySelectorAll('.months .up, .months .down').length`),
      0);
    expectClean(page, url);
    await page.close();
  },

  async shouldTellSmallReturnsInAsManyDigitsAsTheyTake() {
    const { url, report } = run('small', { runners: [crossing('small', 20)], bars: oneSeries,
      capital: 20000000 });
    const share = report.runners[0].trading.figures.return * 100;
    assert.ok(Math.abs(share) < 0.05 && Math.abs(share) > 0.001, `${share} %`);
    const page = await browser.open(url);
    const shown = async (of) => Number((await page.value(`document.querySelector(
      '.months td.heat').${of}`)).replace('\u2212', '-').replace(/.*: |%/g, ''));
    assert.ok(Math.abs(await shown('textContent') - share) <= 0.0005 + 0.05 * Math.abs(share));
    assert.ok(Math.abs(await shown('title') - share) <= 0.05 * Math.abs(share));
    expectClean(page, url);
    await page.close();
  },

  async shouldTellNothingByTheYearOfARunOfAFewDays() {
    const { url, report } = run('days', { runners: [crossing('days', 20)], bars: oneSeries });
    const { figures } = report.runners[0].trading;
    assert.deepEqual([figures.annualReturn, figures.annualVolatility], [null, null]);
    assert.match(figures.annualNote, /^11\.\d calendar days are too few .* takes 28$/);
    const page = await browser.open(url);
    const tiles = await tilesOf(page);
    for (const label of ['Annual return', 'Sharpe']) {
      assert.deepEqual([tiles[label].value, tiles[label].below], ['–', 'too few days']);
      assert.equal(tiles[label].title, figures.annualNote);
    }
    expectClean(page, url);
    await page.close();
  },

  async shouldBeReadableOnADeskAndOnAPhoneInLightAndDark() {
    const { url } = run('readable', { runners: [crossing('one', 20), crossing('two', 40)],
      bars: oneSeries, capital: 20000 });
    for (const scheme of ['light', 'dark']) {
      for (const width of [1500, 400]) {
        for (const address of [url, `${url}#one`]) {
          const page = await browser.open(address, { width, scheme });
          await expectReadable(page);
          const cut = await page.value(`Array.from(document.querySelectorAll('.table :is(th, td)'),
            (cell) => (cell.scrollWidth > cell.clientWidth ? cell.textContent : null))
            .filter((text) => text)`);
          assert.deepEqual(cut, []);
          expectClean(page, url);
          await page.close();
        }
      }
    }
  },

  async shouldFollowTheColoursOfTheSystemUntilOneIsChosen() {
    const { url } = run('colours', { runners: [crossing('one', 20)], bars: oneSeries });
    const page = await browser.open(url, { scheme: 'dark' });
    const back = 'getComputedStyle(document.body).backgroundColor';
    const dark = await page.value(back);
    await page.setScheme('light');
    await page.frames();
    const light = await page.value(back);
    assert.notEqual(light, dark);
    await page.click('[data-value="dark"]');
    assert.equal(await page.value(back), dark);
    await page.click('[data-value="red"]');
    assert.equal(await page.value('document.documentElement.dataset.rise'), 'red');
    expectClean(page, url);
    await page.close();
  },

  async shouldShowSmallSharesWithFourDecimals() {
    const { url, report } = run('small', { runners: [crossing('small', 20)], bars: oneSeries,
      capital: 3000000 });
    const { figures } = report.runners[0].trading;
    const fall = figures.maxDrawdown.share;
    assert.ok(fall > 0.0000005 && fall < 0.00005, JSON.stringify(figures));
    const page = await browser.open(url);
    const tile = (await tilesOf(page))['Max drawdown'];
    assert.deepEqual([tile.value, tile.className],
      [`\u2212${(fall * 100).toFixed(4)}%`, 'tile-value down']);
    expectClean(page, url);
    await page.close();
  },

  async shouldTellNoFallInPercentOfAnAccountThatBeganWithNothing() {
    const { url, report } = run('nothing', { runners: [crossing('nothing', 20)], bars: oneSeries,
      capital: 0 });
    const { maxDrawdown } = report.runners[0].trading.figures;
    assert.equal(maxDrawdown.share, null);
    assert.ok(maxDrawdown.amount > 0);
    const page = await browser.open(url);
    assert.equal((await tilesOf(page))['Max drawdown'].value, '–');
    expectClean(page, url);
    await page.close();
  },

  async shouldNameInTheOverviewWhatWasPlayed() {
    const { url } = run('part', { runners: [crossing('quick', 10), crossing('slow', 40)],
      bars: oneSeries, to: '2021-01-06T12:00' });
    const page = await browser.open(url);
    const under = await page.value(text('.title p'));
    assert.match(under, /2021-01-04 .*2021-01-06 /, 'what was played');
    assert.doesNotMatch(under, /2021-01-15/, 'the end of the data');
    const late = await browser.open(run('late', { runners: [crossing('late', 10)],
      bars: oneSeries, from: '2021-01-11' }).url);
    assert.match(await late.value(text('.title p')), /2021-01-11 .*2021-01-15 /, 'no history');
    assert.match((await range(late))[0], /^2021-01-1[01] /, 'the chart begins with the run');
    await late.click('.chart-tools [aria-label="Span"] button:last-child');
    assert.match((await range(late))[0], /^2021-01-04 /, 'what was before is there, too');
    await late.close();
    await expectClean(page, url);
    await page.close();
  },

  async shouldHaveAPageForEachRunnerAndAnOverview() {
    const runners = [crossing('quick', 10), crossing('slow <b>&"', 40),
      { name: 'watching', strategy: 'print_events' }];
    const { url, report } = run('several',
      { runners, bars: [...oneSeries, { file: more, code: 'B.X' }] });
    const page = await browser.open(url);
    assert.equal(await page.value(
      'document.querySelectorAll("[aria-label=Runners] tr[data-row]").length'), 3);
    assert.ok(await page.value(painted) > 5000, 'the overview draws nothing');
    await page.click('.nav a:nth-child(3)');
    assert.ok((await page.value(text('h1'))).startsWith('slow <b>&"'));
    assert.ok((await page.value(text('.summary')))
      .startsWith(`${report.runners[1].trading.trades.length} fills`));
    await page.click('.nav a:nth-child(4)');
    assert.ok((await page.value(text('h1'))).startsWith('watching'));
    assert.ok(await page.value(painted) > 10000, 'a runner without trades has no chart');
    assert.equal(await page.value('document.querySelector(".trades")'), null);
    expectClean(page, url);
    await page.close();
  },
};

await runTests(browser, tests, only);
