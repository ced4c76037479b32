// How figures and parameters read.

const COUNTS = new Set(['fills', 'closings']);

function figureText(at, value) {
  const figure = sweep.figures[at];
  if (value === null) return NONE;
  if (figure.isShare) return percent(value);
  return number(value, COUNTS.has(figure.name) ? 0 : 2);
}

/**
 * The same in few characters, for a cell among others, the strongest of which is `strongest`. Large
 * amounts have so many digits.
 */
function figureShort(at, value, strongest, digits) {
  if (sweep.figures[at].isShare) return percent(value, strongest >= 0.1 ? 0 : 1);
  if (strongest >= 100000) return short(value, digits, true);
  return number(value, COUNTS.has(sweep.figures[at].name) || strongest >= 100 ? 0 : 2);
}

/** A span of the walk; the last one ends a millisecond after the last record. */
function windowText({ begin, end }) {
  const last = Date.parse(end);
  return spanText({ begin, end: last % 1000 === 1 ? new Date(last - 1).toISOString() : end });
}

/** "fast 5, slow 20". */
function parametersText(row) {
  return sweep.ranges.map((range, at) => `${range.name} ${range.values[row.places[at]]}`)
    .join(', ');
}

/** A text as one word of a shell's line. */
function shellWord(text) {
  return /^[\w./+,:@%=-]+$/.test(text) ? text : `'${text.replaceAll("'", "'\\''")}'`;
}

/**
 * The options of `orvane run` that make the run of a row, with its digest, of which the runner's
 * name is a part; beside those that the sweep had.
 */
function byHand(row) {
  const params = { ...sweep.params };
  sweep.ranges.forEach((range, at) => {
    const place = row.places[at];
    const isText = range.texts && range.texts[place];
    params[range.name] = isText ? range.values[place] : JSON.parse(range.values[place]);
  });
  const span = row.window ? sweep.windows[row.window - 1].inSample : null;
  return `--name ${shellWord(`${sweep.strategy}-${row.number}`)} ` +
    `--params ${shellWord(JSON.stringify(params))}` +
    `${span ? ` --from ${span.begin} --to ${span.end}` : ''}`;
}

/** The better of two figures; one that is not there is worse than any. */
function better(at, one, other) {
  if (one === null || other === null) return one === null ? other : one;
  return sweep.figures[at].isBestLow ? Math.min(one, other) : Math.max(one, other);
}

function worse(at, one, other) {
  if (one === null || other === null) return one === null ? other : one;
  return sweep.figures[at].isBestLow ? Math.max(one, other) : Math.min(one, other);
}
