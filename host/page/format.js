// How numbers and times read. Times are shown in the zone of the run.

const NONE = '–';
const formats = new Map();

/** Whether the text of a number has a digit other than 0: what rounds to nothing has no sign. */
const readsAsSome = (text) => /[1-9]/.test(text);

/** A number with separators and so many decimals; a true minus sign, for columns that align. */
function number(value, digits = 0, leastDigits = digits) {
  if (value === null || value === undefined || !Number.isFinite(value)) return NONE;
  const key = digits * 100 + leastDigits;
  if (!formats.has(key)) {
    formats.set(key, new Intl.NumberFormat('en-US', {
      minimumFractionDigits: leastDigits, maximumFractionDigits: digits,
    }));
  }
  const text = formats.get(key).format(value);
  return readsAsSome(text) ? text.replace('-', '\u2212') : text.replace('-', '');
}

const money = (value) => number(value, 2);
const quantity = (value) => number(value, 8, 0);

/** With a plus sign where it is one. */
function signed(text, value) {
  return value > 0 && readsAsSome(text) ? `+${text}` : text;
}

/** The class of a number by how it reads: good above 0, bad below, none where it reads as 0. */
function tone(text) {
  if (!readsAsSome(text)) return '';
  return text.startsWith('\u2212') ? 'down' : 'up';
}

/** How many decimals show a share: two, or four where two would read as nothing and four do not. */
function shareDecimals(share) {
  const size = Math.abs(share * 100);
  return size >= 0.00005 && size < 0.005 ? 4 : 2;
}

function percent(share, digits = shareDecimals(share)) {
  return share === null || share === undefined ? NONE : `${number(share * 100, digits)}%`;
}

/** How many decimals show two digits of a small number, and `least` of a larger one. */
function decimalsFor(value, least) {
  const size = Math.abs(value);
  return size > 0 && size < 1 ? Math.min(12, Math.max(least, 1 - Math.floor(Math.log10(size))))
    : least;
}

const signedMoney = (value) => signed(money(value), value);
const signedPercent = (share, digits) => signed(percent(share, digits), share);

/** The text of a signed number in its colour. */
function colored(text) {
  return el('span', { class: tone(text) }, text);
}

/** Large amounts in few characters, three digits or so many: 12.3M. `isEven`: with their zeros. */
function short(value, figures = 3, isEven = false) {
  if (value === null || value === undefined) return NONE;
  for (const [unit, name] of [[1e12, 'T'], [1e9, 'B'], [1e6, 'M'], [1e3, 'K']]) {
    const part = value / unit;
    const whole = Math.abs(part) >= 100 ? 3 : Math.abs(part) >= 10 ? 2 : 1;
    const digits = Math.max(0, figures - whole);
    if (Math.abs(part) >= 1) return number(part, digits, isEven ? digits : 0) + name;
  }
  return number(value, 2, 0);
}

/** An amount for the axis of a chart: fine enough to tell two near ones apart. */
function roundMoney(value) {
  const size = Math.abs(value);
  return size >= 1e9 ? number(value / 1e6, 2) + 'M' : number(value, size >= 1000 ? 0 : 2);
}

function bytes(value) {
  for (const [unit, name] of [[2 ** 30, 'GiB'], [2 ** 20, 'MiB'], [2 ** 10, 'KiB']])
    if (value >= unit) return `${number(value / unit, 1)} ${name}`;
  return `${number(value)} bytes`;
}

/** The names of numbers: plural(1, 'bar') is "1 bar". */
function plural(count, noun) {
  return `${number(count)} ${noun}${count === 1 ? '' : 's'}`;
}

/** How many decimals prices need, at most 8, and no more than nearly all of them need. */
function decimalsOf(...columns) {
  const counts = new Array(9).fill(0);
  let total = 0;
  for (const column of columns) {
    const step = Math.max(1, Math.floor(column.length / 500));
    for (let i = 0; i < column.length; i += step, ++total) {
      let digits = 0;
      const near = 1e-9 * Math.max(1, Math.abs(column[i]));
      while (digits < 8 && Math.abs(column[i] - Number(column[i].toFixed(digits))) > near) ++digits;
      ++counts[digits];
    }
  }
  let seen = 0;
  for (let digits = 0; digits < 8; ++digits) {
    seen += counts[digits];
    if (seen >= 0.98 * total) return digits;
  }
  return 8;
}

const DAY = 86400000;
const zoneStarts = run.zone.map((pair) => pair[0]);

/** A UTC time on the clock of the run's zone, as if that were UTC. */
function localMs(utcMs) {
  return utcMs + run.zone[Math.max(0, upperBound(zoneStarts, utcMs) - 1)][1];
}

function pad(value, width = 2) {
  return String(value).padStart(width, '0');
}

const MONTHS = ['Jan', 'Feb', 'Mar', 'Apr', 'May', 'Jun', 'Jul', 'Aug', 'Sep', 'Oct', 'Nov',
  'Dec'];

function dateText(utcMs) {
  const date = new Date(localMs(utcMs));
  return `${pad(date.getUTCFullYear(), 4)}-${pad(date.getUTCMonth() + 1)}-` +
    pad(date.getUTCDate());
}

/** As fine as it has to be: "2021-01-04 09:30", with seconds where there are some. */
function timeText(utcMs) {
  if (utcMs === null || utcMs === undefined) return NONE;
  const date = new Date(localMs(utcMs));
  let text = `${dateText(utcMs)} ${pad(date.getUTCHours())}:${pad(date.getUTCMinutes())}`;
  const ms = date.getUTCMilliseconds();
  if (date.getUTCSeconds() !== 0 || ms !== 0) text += `:${pad(date.getUTCSeconds())}`;
  return ms === 0 ? text : `${text}.${pad(ms, 3)}`;
}

/** Of the texts in the report, which are UTC: "2021-01-04T01:30:00.000Z". */
function reportTime(text) {
  return text ? timeText(Date.parse(text)) : NONE;
}
function reportDate(text) {
  return text ? dateText(Date.parse(text)) : NONE;
}

/** A span of the report. Whole days are told as such: the end of a day is the next one's begin. */
function spanText({ begin, end }) {
  if (!begin || !end) return '';
  const [from, to] = [Date.parse(begin), Date.parse(end)];
  const isWhole = localMs(from) % DAY === 0 && localMs(to) % DAY === 0;
  return isWhole ? `${dateText(from)} – ${dateText(to - 1)}`
    : `${timeText(from)} – ${timeText(to)}`;
}

/** The length of an interval: "5m", "1h 30m", "3d". */
function widthText(ms) {
  const units = [[7 * DAY, 'w'], [DAY, 'd'], [3600000, 'h'], [60000, 'm'], [1000, 's']];
  for (const [unit, name] of units) if (ms >= unit && ms % unit === 0) return ms / unit + name;
  return `${ms}ms`;
}
