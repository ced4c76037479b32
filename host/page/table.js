// A table of any length: sorted and filtered as a whole, drawn only where one looks.

const ROW_HEIGHT = 32;
const SPARE_ROWS = 12;
const MOST_MEASURED = 400;
const MOST_WIDTH = 360;
const CELL_PADDING = 28;  // Some pixels more than the style says: bold texts are wider.
const EDGE_PADDING = 6;  // That the first and the last column have beside it.

/**
 * Columns have `title`, `value(i)` to sort by, `show(i)`, a text or nodes, and may have `isNumber`,
 * `tone(i)`, `hint` and `title_of(i)`, the hint of a cell. Columns are as wide as their cells, up
 * to a limit. Rows are known by their number, 0 to `count` - 1.
 */
class DataTable {
  constructor({ label, columns, count, onChoose = null, sortBy = null, mostRows = 14 }) {
    this.columns = columns;
    this.count = count;
    this.onChoose = onChoose;
    this.sort = { column: sortBy, isDown: false };
    this.filter = null;
    this.chosen = null;
    this.body = el('tbody');
    const widths = this.widths();
    this.heads = columns.map((column, at) => this.head(column, at));
    this.node = el('div', {
      class: 'table', tabindex: '0', role: 'region', 'aria-label': label,
      style: `max-height: ${(mostRows + 1.5) * ROW_HEIGHT}px`,
      scroll: () => this.draw(), keydown: (event) => this.onKey(event),
    }, el('table', { style: `min-width: ${widths.reduce((sum, width) => sum + width, 0)}px` },
      el('colgroup', {}, ...widths.map((width) => el('col', { style: `width: ${width}px` }))),
      el('thead', {}, el('tr', {}, ...this.heads)), this.body));
    this.observer = new ResizeObserver(() => this.draw());
    this.observer.observe(this.node);
    this.fade = fadeWhereCut(this.node);
    this.update();
  }

  destroy() {
    this.observer.disconnect();
    this.fade.disconnect();
  }

  /** Rows whose cells of a column are likely its longest: some, and those of the extreme values. */
  longRows(column) {
    const rows = [];
    const step = Math.ceil(this.count / MOST_MEASURED) | 1;
    for (let i = 0; i < this.count; i += step) rows.push(i);
    if (column.isNumber) {
      let [least, most] = [null, null];
      for (let i = 0; i < this.count; ++i) {
        const value = column.value(i);
        if (value === null || value === undefined) continue;
        if (least === null || value < column.value(least)) least = i;
        if (most === null || value > column.value(most)) most = i;
      }
      if (least !== null) rows.push(least, most);
    }
    return rows;
  }

  /** What each column takes, by its title and its cells. */
  widths() {
    const canvas = document.createElement('canvas').getContext('2d');
    const { fontFamily } = getComputedStyle(document.body);
    const last = this.columns.length - 1;
    return this.columns.map((column, at) => {
      const texts = this.longRows(column).map((i) => column.show(i))
        .map((shown) => (typeof shown === 'string' ? shown : shown.textContent));
      const longest = texts.reduce((one, other) => (other.length > one.length ? other : one), '');
      canvas.font = `14px ${fontFamily}`;
      const cells = canvas.measureText(longest).width;
      canvas.font = `550 12px ${fontFamily}`;
      const title = canvas.measureText(`${column.title} ↓`).width;
      const edge = at === 0 || at === last ? EDGE_PADDING : 0;
      return Math.ceil(Math.min(MOST_WIDTH, Math.max(cells, title))) + CELL_PADDING + edge;
    });
  }

  head(column, at) {
    return el('th', { scope: 'col', class: column.isNumber ? 'number' : null },
      el('button', { type: 'button', title: column.hint, click: () => this.sortColumn(at) },
        column.title));
  }

  /** Once upwards, then downwards, then as it was; numbers begin with the largest. */
  sortColumn(at) {
    const startsDown = Boolean(this.columns[at].isNumber);
    if (this.sort.column !== at) this.sort = { column: at, isDown: startsDown };
    else if (this.sort.isDown === startsDown) this.sort.isDown = !startsDown;
    else this.sort = { column: null, isDown: false };
    this.update();
  }

  setFilter(filter) {
    this.filter = filter;
    this.update();
  }

  update() {
    const rows = [];
    for (let i = 0; i < this.count; ++i) if (!this.filter || this.filter(i)) rows.push(i);
    const { column, isDown } = this.sort;
    if (column !== null) {
      const { value } = this.columns[column];
      const sign = isDown ? -1 : 1;
      const keys = new Map(rows.map((i) => [i, value(i)]));
      rows.sort((a, b) => compare(keys.get(a), keys.get(b), sign) || a - b);
    }
    this.rows = rows;
    this.heads.forEach((head, at) => head.setAttribute('aria-sort',
      at !== column ? 'none' : isDown ? 'descending' : 'ascending'));
    this.node.querySelector('table').setAttribute('aria-rowcount', String(rows.length));
    this.draw(true);
  }

  draw(isForced = false) {
    const top = this.node.scrollTop;
    const first = Math.max(0, Math.floor(top / ROW_HEIGHT) - SPARE_ROWS);
    const seen = Math.ceil((this.node.clientHeight || 600) / ROW_HEIGHT) + 2 * SPARE_ROWS;
    const last = Math.min(this.rows.length, first + seen);
    if (!isForced && first === this.first && last === this.last) return;
    this.first = first;
    this.last = last;
    const rows = this.rows.slice(first, last).map((i) => this.row(i));
    const spacer = (count) => el('tr', { class: 'spacer', 'aria-hidden': 'true' },
      el('td', { colspan: this.columns.length, style: `height: ${count * ROW_HEIGHT}px` }));
    this.body.replaceChildren(spacer(first), ...rows, spacer(this.rows.length - last));
  }

  row(i) {
    return el('tr', {
      'data-row': i, class: this.onChoose ? 'choosable' : null,
      'aria-selected': this.onChoose ? String(i === this.chosen) : null,
      click: this.onChoose ? () => this.choose(i) : null,
    }, ...this.columns.map((column) => el('td', {
      class: [column.isNumber ? 'number' : '', column.tone ? column.tone(i) : ''].join(' ').trim()
        || null,
      title: column.title_of ? column.title_of(i) : null,
    }, column.show(i))));
  }

  choose(i) {
    this.mark(i);
    if (this.onChoose) this.onChoose(i);
  }

  /** Marks a row as chosen and scrolls to it. */
  mark(i) {
    this.chosen = i;
    const at = this.rows.indexOf(i);
    if (at >= 0) {
      const top = at * ROW_HEIGHT;
      const room = this.node.clientHeight - 2 * ROW_HEIGHT;
      if (top < this.node.scrollTop) this.node.scrollTop = top;
      else if (top > this.node.scrollTop + room) this.node.scrollTop = top - room;
    }
    this.draw(true);
  }

  /** The row that stands so many rows below the chosen one. */
  neighbour(step) {
    const at = this.rows.indexOf(this.chosen);
    if (at < 0) return this.rows.length ? this.rows[step > 0 ? 0 : this.rows.length - 1] : null;
    return this.rows[Math.min(this.rows.length - 1, Math.max(0, at + step))];
  }

  onKey(event) {
    const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    if (!step || !this.onChoose) return;
    event.preventDefault();
    const next = this.neighbour(step);
    if (next !== null) this.choose(next);
  }
}

/** Ascending with a sign of 1, descending with -1; what is missing comes last either way. */
function compare(a, b, sign) {
  const isNone = (value) => value === null || value === undefined;
  if (isNone(a) || isNone(b)) return Number(isNone(a)) - Number(isNone(b));
  return a < b ? -sign : a > b ? sign : 0;
}
