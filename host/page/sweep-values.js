// How figures and parameters read.

const COUNTS = new Set(['fills', 'closings']);

function figureText(at, value) {
  const figure = sweep.figures[at];
  if (value === null) return NONE;
  if (figure.isShare) return percent(value);
  return number(value, COUNTS.has(figure.name) ? 0 : 2);
}

/** The same in few characters, for cells. */
function figureShort(at, value) {
  if (value === null) return '';
  if (sweep.figures[at].isShare) return percent(value, Math.abs(value) >= 0.1 ? 0 : 1);
  return Math.abs(value) >= 1000 ? short(value).replace('-', '\u2212')
    : number(value, COUNTS.has(sweep.figures[at].name) || Math.abs(value) >= 100 ? 0 : 2);
}

/** "fast 5, slow 20". */
function parametersText(row) {
  return sweep.ranges.map((range, at) => `${range.name} ${range.values[row.places[at]]}`)
    .join(', ');
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
