// Where trades and equity stand among the candles. No drawing.

/** The middle one of the steps between ascending times. */
function usualStep(times) {
  const steps = [];
  const every = Math.max(1, Math.floor(times.length / 1000));
  for (let i = every; i < times.length; i += every) steps.push(times[i] - times[i - 1]);
  steps.sort((a, b) => a - b);
  return steps.length ? steps[steps.length >> 1] : DAY;
}

/**
 * The candle that a fill belongs to: the last that begins at or before it. A fill inside a bar has
 * the bar's end as its time, which is the next one's begin: then the price tells.
 */
function candleOf(candles, utcMs, price) {
  const at = Math.max(0, upperBound(candles.time, utcMs) - 1);
  const holds = (i) => price >= candles.low[i] && price <= candles.high[i];
  const isEnd = at > 0 && candles.time[at] === utcMs;
  return isEnd && !holds(at) && holds(at - 1) ? at - 1 : at;
}

/**
 * The times of a chart: the candles', and those of the equity curve that lie well before the first
 * or after the last of them. `chart` has them as the chart library takes them: seconds on the
 * run's clock, each later than the one before also where clocks are set back.
 */
function makeAxis(candles, curve) {
  let utc = candles ? Array.from(candles.time) : [];
  if (curve) {
    const margin = candles ? 1.5 * usualStep(candles.time) : 0;
    const first = candles ? utc[0] - margin : Infinity;
    const last = candles ? utc[utc.length - 1] + margin : Infinity;
    const before = [];
    const after = [];
    for (const time of curve.time) {
      if (time < first) before.push(time);
      else if (time > last) after.push(time);
    }
    utc = before.concat(utc, after);
    if (before.length) return { ...axisOf(utc), firstCandle: before.length };
  }
  return { ...axisOf(utc), firstCandle: 0 };
}

function axisOf(times) {
  const utc = [];
  const chart = [];
  for (const time of times) {
    if (utc.length && time <= utc[utc.length - 1]) continue;
    const seconds = localMs(time) / 1000;
    const least = chart.length ? chart[chart.length - 1] + 0.001 : -Infinity;
    utc.push(time);
    chart.push(Math.max(seconds, least));
  }
  return { utc, chart };
}

/**
 * The equity curve on an axis: for each of its times the last equity before the next one, and the
 * deepest fall from the peak so far, as a share of it, that the curve had by then. `null` before
 * the curve begins, and every fall where there are no shares, of an account that began with nothing.
 */
function onAxis(axis, curve, hasShares = true) {
  const equity = new Array(axis.utc.length).fill(null);
  const drawdown = new Array(axis.utc.length).fill(null);
  let next = 0;
  let peak = -Infinity;
  let last = null;
  for (let i = 0; i < axis.utc.length; ++i) {
    const end = i + 1 < axis.utc.length ? axis.utc[i + 1] : Infinity;
    let deepest = last === null || peak <= 0 ? 0 : last / peak - 1;
    for (; next < curve.time.length && curve.time[next] < end; ++next) {
      last = curve.equity[next];
      peak = Math.max(peak, last);
      if (peak > 0) deepest = Math.min(deepest, last / peak - 1);
    }
    if (last === null) continue;
    equity[i] = last;
    if (hasShares) drawdown[i] = deepest;
  }
  return { equity, drawdown };
}
