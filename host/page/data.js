// The run's data as the command put it into the page, with its time columns unpacked.

/** Times are stored as the first one and the steps from each to the next. */
function unpackTimes(steps) {
  const times = new Float64Array(steps.length);
  let time = 0;
  for (let i = 0; i < steps.length; ++i) times[i] = time += steps[i];
  return times;
}

/** Reads the page's data and unpacks it in place. */
function readRun() {
  const run = embeddedJson('data');
  run.timing = embeddedJson('timing');
  for (const series of run.series) series.candles.time = unpackTimes(series.candles.time);
  const curves = run.entries.filter((entry) => entry.trading).map((entry) => entry.trading.equity);
  if (run.total && run.total.equity) curves.push(run.total.equity);
  for (const curve of curves) curve.time = unpackTimes(curve.time);
  for (const entry of run.entries)
    if (entry.trading) entry.trading.trades.time = unpackTimes(entry.trading.trades.time);
  return run;
}

const run = readRun();

/** What of a span of data was played: what lies before the run's begin was there as history. */
function playedSpan({ begin, end }) {
  const isLater = run.from && begin && begin < run.from && run.from < end;
  return { begin: isLater ? run.from : begin, end };
}
