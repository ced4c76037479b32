// A figure over two parameters, as a table whose cells have colours: every number can be read,
// found and copied, and a click shows the runs of a cell.

const MOST_STEPS = 40;
const MOST_WIDE_STEPS = 24;  // From there on cells are as narrow as their texts.

/** The values of a range along one side, several in one step where there are too many. */
function stepsOf(range) {
  const width = Math.ceil(range.values.length / MOST_STEPS);
  const names = [];
  for (let first = 0; first < range.values.length; first += width) {
    const last = Math.min(first + width, range.values.length) - 1;
    names.push(first === last ? range.values[first]
      : `${range.values[first]} – ${range.values[last]}`);
  }
  return { names, of: (place) => Math.floor(place / width) };
}

/** What the runs of each cell come to: an array of { value, rows } by y and x. */
function cellsOf(rows, { x, y, figure, how }) {
  const xs = stepsOf(sweep.ranges[x]);
  const ys = y === null ? { names: [''], of: () => 0 } : stepsOf(sweep.ranges[y]);
  const cells = ys.names.map(() =>
    xs.names.map(() => ({ value: null, sum: 0, count: 0, runs: 0, bad: null })));
  for (const row of rows) {
    const cell = cells[ys.of(y === null ? 0 : row.places[y])][xs.of(row.places[x])];
    ++cell.runs;
    if (!row.isGood) cell.bad = row;
    const value = row.isGood ? row.figures[figure] : null;
    if (value === null) continue;
    cell.sum += value;
    ++cell.count;
    if (how === 'mean') cell.value = cell.sum / cell.count;
    else cell.value = (how === 'best' ? better : worse)(figure, cell.value, value);
  }
  return { xs, ys, cells };
}

/** Which colour a value has, and how strong: figures around 0 have two colours, others one. */
function colorsOf(values) {
  const sizes = values.map(Math.abs).sort((a, b) => a - b);
  const hasBoth = values.some((value) => value < 0);
  // One wild value does not make all others pale.
  const strongest = sizes[Math.floor(0.95 * (sizes.length - 1))] || sizes[sizes.length - 1] || 1;
  const least = Math.min(...values.slice(0, 1), ...chunked(values, Math.min));
  const most = Math.max(...values.slice(0, 1), ...chunked(values, Math.max));
  return (value, text) => {
    if (hasBoth) {
      const share = Math.min(1, Math.abs(value) / strongest);
      return { tone: tone(text), heat: tone(text) ? 8 + 56 * share : 0 };
    }
    return { tone: 'size', heat: most > least ? 6 + 58 * (value - least) / (most - least) : 30 };
  };
}

/** The extremes of parts of an array that is too long for the arguments of one call. */
function chunked(values, extreme) {
  const result = [];
  for (let i = 0; i < values.length; i += 10000)
    result.push(extreme(...values.slice(i, i + 10000)));
  return result;
}

/** The table of the map. `onChoose` is given the rows of a cell, by a test, and its name. */
function mapTable(rows, choice, onChoose) {
  const { x, y, figure } = choice;
  const { xs, ys, cells } = cellsOf(rows, choice);
  const values = cells.flat().map((cell) => cell.value).filter((value) => value !== null);
  if (values.length === 0) return el('p', { class: 'card-note' }, 'No run has this figure.');
  const color = colorsOf(values);
  const strongest = values.reduce((most, value) => Math.max(most, Math.abs(value)), 0);
  const isDense = xs.names.length > MOST_WIDE_STEPS;
  const best = values.reduce((one, other) => better(figure, one, other));
  const cellNode = (cell, atX, atY) => {
    const name = `${sweep.ranges[x].name} ${xs.names[atX]}` +
      (y === null ? '' : `, ${sweep.ranges[y].name} ${ys.names[atY]}`);
    const choose = () => onChoose((row) => xs.of(row.places[x]) === atX &&
      (y === null || ys.of(row.places[y]) === atY), name);
    if (cell.value === null && cell.runs === 0) return el('td', { class: 'none' });
    const place = { 'data-x': atX, 'data-y': atY };
    if (cell.value === null) {
      const why = cell.bad ? `${cell.bad.status}: ${cell.bad.message}` : 'no such figure';
      return el('td', { class: 'bad', title: `${name}: ${why}`, ...place }, el('button', {
        type: 'button', 'aria-label': `${name}: ${why}`, click: choose,
      }, cell.bad ? (cell.bad.status === 'Crashed' ? '†' : '×') : NONE));
    }
    const text = figureText(figure, cell.value);
    const { tone: hue, heat } = color(cell.value, text);
    return el('td', {
      class: `heat ${hue}${cell.value === best ? ' best' : ''}`,
      style: `--heat: ${heat.toFixed(1)}%`,
      title: `${name}: ${text}${cell.runs > 1 ? ` of ${plural(cell.runs, 'run')}` : ''}`,
      ...place,
    }, el('button', {
      type: 'button', 'aria-label': `${name}: ${text}`,
      click: choose,
    }, figureShort(figure, cell.value, strongest, isDense ? 2 : 3)));
  };
  return scrollBox(el('table', { class: isDense ? 'map dense' : 'map' },
    el('thead', {},
      el('tr', {}, el('th', {}), el('th', { colspan: xs.names.length, class: 'axis' },
        el('span', {}, sweep.ranges[x].name))),
      el('tr', {}, el('th', { class: 'axis' }, y === null ? '' : sweep.ranges[y].name),
        ...xs.names.map((name) => el('th', { scope: 'col' }, el('span', {}, name))))),
    // The lower values of the second parameter stand below, as on an axis.
    el('tbody', {}, ...ys.names.map((name, atY) => el('tr', {},
      el('th', { scope: 'row' }, name),
      ...cells[atY].map((cell, atX) => cellNode(cell, atX, atY)))).reverse())));
}

/** The card of the map with what it shows to choose from. */
class MapCard {
  constructor(onChoose) {
    this.onChoose = onChoose;
    this.choice = {
      x: sweep.ranges.length > 1 ? 1 : 0, y: sweep.ranges.length > 1 ? 0 : null,
      figure: sweep.rank, how: 'best',
    };
    this.window = isWalk ? 1 : 0;
    this.marked = null;
    this.body = el('div', { class: 'map-body' });
    this.node = card('Heat map', this.tools(), this.body,
      el('p', { class: 'card-note' }, this.note()));
    this.draw();
  }

  note() {
    const others = sweep.ranges.length - (this.choice.y === null ? 1 : 2);
    return (isWalk ? 'In-sample runs only. ' : '') +
      (others > 0 ? 'Each cell stands for all runs with its two values: the best of them, their ' +
        'mean or the worst. ' : '') +
      'The best cell has a frame; a click on one shows its runs below' +
      (sweep.errors ? '. Where it says × all ended as errors, where † they crashed.' : '.');
  }

  tools() {
    const set = (key) => (value) => {
      const at = Number(value);
      // Two parameters that meet change places.
      if (key === 'x' && at === this.choice.y) this.choice.y = this.choice.x;
      if (key === 'y' && at === this.choice.x) this.choice.x = this.choice.y;
      this.choice[key] = key === 'how' ? value : at;
      for (const [name, select] of Object.entries(this.selects)) select.value = this.choice[name];
      this.draw();
    };
    const parameters = (side) => sweep.ranges.map((range, at) => [at, `${side}: ${range.name}`]);
    const pick = (label, key, choices) => chooser(label, choices, this.choice[key], set(key));
    this.selects = {
      figure: pick('Figure', 'figure', sweep.figures.map((figure, at) => [at, figure.title])),
      x: pick('Across', 'x', parameters('Across')),
    };
    if (this.choice.y !== null) this.selects.y = pick('Down', 'y', parameters('Down'));
    if (sweep.ranges.length > 2) {
      this.selects.how = pick('Of several runs', 'how',
        [['best', 'Best'], ['mean', 'Mean'], ['worst', 'Worst']]);
    }
    const selects = Object.values(this.selects);
    if (isWalk) {
      selects.unshift(chooser('Window', sweep.windows.map((_, at) =>
        [at + 1, `Window ${at + 1}, in-sample`]), 1, (value) => {
        this.window = Number(value);
        this.draw();
      }));
    }
    return el('div', { class: 'map-tools' }, ...selects);
  }

  /** Marks the cell of a row; null for none. */
  mark(row) {
    this.marked = row;
    for (const cell of this.body.querySelectorAll('.marked')) cell.classList.remove('marked');
    if (!row || row.window !== this.window) return;
    const { x, y } = this.choice;
    const atX = stepsOf(sweep.ranges[x]).of(row.places[x]);
    const atY = y === null ? 0 : stepsOf(sweep.ranges[y]).of(row.places[y]);
    const cell = this.body.querySelector(`[data-x="${atX}"][data-y="${atY}"]`);
    if (cell) cell.classList.add('marked');
  }

  draw() {
    const rows = sweep.rows.filter((row) => row.window === this.window);
    this.body.replaceChildren(mapTable(rows, this.choice, (test, name) =>
      this.onChoose((row) => row.window === this.window && test(row),
        isWalk ? `window ${this.window}, ${name}` : name)));
    this.mark(this.marked);
    this.showBest();
  }

  /** Where the map is wider than the page, begins with its best cell. */
  showBest() {
    const box = this.body.querySelector('.scroll-x');
    const best = this.body.querySelector('.best');
    if (!box || !best) return;
    const { left, right, width } = box.getBoundingClientRect();
    const cell = best.getBoundingClientRect();
    if (cell.right > right) box.scrollLeft += (cell.left + cell.right - left - right) / 2;
  }
}
