// All runs as a table, ranked.

function runColumns(rows) {
  const columns = [
    { title: 'Rank', isNumber: true, value: (i) => rows[i].rank,
      show: (i) => (rows[i].rank === null ? NONE : number(rows[i].rank)) },
    { title: 'No.', isNumber: true, value: (i) => rows[i].number,
      show: (i) => String(rows[i].number),
      hint: 'The number of the combination in the grid' },
  ];
  if (isWalk) {
    columns.unshift({ title: 'Window', isNumber: true, value: (i) => rows[i].window,
      show: (i) => String(rows[i].window) });
    columns.splice(1, 0, { title: 'Sample', value: () => 0, show: () => 'in-sample' });
  }
  sweep.ranges.forEach((range, at) => columns.push({
    title: range.name, isNumber: true, value: (i) => rows[i].places[at],
    show: (i) => range.values[rows[i].places[at]],
  }));
  columns.push({ title: 'Status', value: (i) => rows[i].status, show: (i) => rows[i].status,
    tone: (i) => (rows[i].isGood ? '' : 'down') });
  if (rows.some((row) => row.message)) {
    columns.push({ title: 'Message', value: (i) => rows[i].message || null,
      show: (i) => rows[i].message, title_of: (i) => rows[i].message || null });
  }
  sweep.figures.forEach((figure, at) => columns.push({
    title: figure.title, isNumber: true, value: (i) => rows[i].figures[at],
    show: (i) => figureText(at, rows[i].figures[at]), hint: figure.name,
    tone: (i) => (figure.name === 'profit' || figure.name === 'return'
      ? tone(figureText(at, rows[i].figures[at])) : ''),
  }));
  return columns;
}

class RowsCard {
  /** `onChoose` is given the row that is chosen. */
  constructor(onChoose) {
    this.onChoose = onChoose;
    this.summary = el('span', { class: 'summary' });
    this.all = el('button', { type: 'button', class: 'toggle', hidden: true,
      click: () => this.show(null, '') }, 'Show all');
    this.table = new DataTable({ label: 'Runs', columns: runColumns(sweep.rows),
      count: sweep.rows.length, mostRows: 18, onChoose: (i) => this.tell(i) });
    this.chosen = el('p', { class: 'card-note chosen-run', hidden: true, 'aria-live': 'polite' });
    this.node = card('Runs', el('div', { class: 'map-tools' }, this.summary, this.all),
      this.chosen, this.table.node);
    this.show(null, '');
  }

  forget() {
    this.chosen.hidden = true;
    this.table.mark(null);
    this.onChoose(null);
  }

  /** What a chosen run was, and how to have it by hand. */
  tell(i) {
    const row = sweep.rows[i];
    const parts = [el('b', {}, `No. ${row.number}`), ` ${parametersText(row)}: `,
      row.message ? `${row.status}, ${row.message}. ` : `${row.status}. `,
      'By hand: ', el('code', {}, byHand(row)),
      row.window ? ', in place of the --from and --to of the sweep' : ''];
    this.chosen.replaceChildren(...parts);
    this.chosen.hidden = false;
    this.onChoose(row);
  }

  /** Shows the runs that pass a test; null for all. */
  show(test, name) {
    this.table.setFilter(test && ((i) => test(sweep.rows[i])));
    this.all.hidden = test === null;
    this.summary.textContent = test === null ? plural(sweep.rows.length, 'run')
      : `${name}: ${plural(this.table.rows.length, 'run')}`;
    if (test !== null && this.table.rows.length === 1) this.table.choose(this.table.rows[0]);
    else this.forget();
  }
}
