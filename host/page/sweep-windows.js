// A walk: what each window chose by its in-sample span, and what that gave out-of-sample.

const WINDOW_FIGURES = ['profit', 'return', 'sharpe', 'maxDrawdown.share', 'fills'];

/** The chosen run of a window, in-sample; undefined where none had the figure. */
function choiceOf(window) {
  return sweep.rows.find((row) => row.window === window && row.rank === 1);
}

function windowsCard() {
  const figures = [sweep.rank, ...WINDOW_FIGURES.map((name) =>
    sweep.figures.findIndex((figure) => figure.name === name)).filter((at) => at !== sweep.rank)];
  const rows = sweep.windows.flatMap(({ inSample, outOfSample }, at) => {
    const tried = sweep.outOfSample.find((row) => row.window === at + 1);
    return [[at + 1, 'in-sample', inSample, choiceOf(at + 1)],
      [at + 1, 'out-of-sample', outOfSample, tried]];
  });
  const rowNode = ([window, sample, span, row]) => el('tr', { class: sample },
    el('th', { scope: 'row' }, String(window)), el('td', {}, sample),
    el('td', {}, windowText(span)),
    el('td', {}, row ? parametersText(row) : 'not run',
      row && row.message ? el('div', { class: 'down' }, `${row.status}: ${row.message}`) : null),
    ...figures.map((at) => el('td', {
      class: `number ${row && ['profit', 'return'].includes(sweep.figures[at].name)
        ? tone(figureText(at, row.figures[at])) : ''}`,
    }, row ? figureText(at, row.figures[at]) : '')));
  return card('Windows', el('span', { class: 'aside' }, 'chosen by the in-sample ' +
    `${sweep.figures[sweep.rank].title.toLowerCase()} alone`),
  scrollBox(el('table', { class: 'plain windows' },
    el('thead', {}, el('tr', {}, ...['Window', 'Sample', 'Span (UTC)', 'Parameters']
      .map((title) => el('th', { scope: 'col' }, title)),
    ...figures.map((at) => el('th', { scope: 'col', class: 'number' }, sweep.figures[at].title)))),
    el('tbody', {}, ...rows.map(rowNode)))));
}
