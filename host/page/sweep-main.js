// The page of a sweep, from top to bottom.

function tiles() {
  const profit = sweep.figures.findIndex((figure) => figure.name === 'profit');
  const good = sweep.rows.filter((row) => row.isGood && row.figures[profit] !== null);
  const gains = good.filter((row) => row.figures[profit] > 0).length;
  const result = [tile('Combinations', number(sweep.combinations),
    sweep.gridSize > sweep.combinations ? `of ${number(sweep.gridSize)} of the grid`
      : 'the whole grid')];
  if (isWalk) {
    const sum = sweep.outOfSample.reduce((all, row) => all + (row.figures[profit] || 0), 0);
    result.push(tile('Windows', number(sweep.windows.length), 'in- and out-of-sample'),
      tile('Out-of-sample profit', money(sum),
        `sum of ${plural(sweep.outOfSample.length, 'window')}`));
  } else {
    const best = sweep.rows.find((row) => row.rank === 1);
    const figure = sweep.figures[sweep.rank].title;
    if (best) {
      result.push(tile(`Best: ${figure.toLowerCase()}`,
        figureText(sweep.rank, best.figures[sweep.rank]), parametersText(best),
        { hint: parametersText(best) }));
    }
  }
  result.push(tile(isWalk ? 'In-sample with a profit' : 'With a profit',
    good.length ? percent(gains / good.length, 1) : NONE,
    `${number(gains)} of ${plural(good.length, 'run')}`));
  const crashed = sweep.crashes;
  if (sweep.errors > crashed)
    result.push(tile('Errors', number(sweep.errors - crashed), 'their message is in the table'));
  if (crashed)
    result.push(tile('Crashed', number(crashed), 'each ended its process and nothing else'));
  return tileRows(result);
}

function notices() {
  const result = [];
  if (sweep.done < sweep.expected) {
    result.push(el('p', { class: 'notice bad' },
      `${sweep.isInterrupted ? 'Interrupted' : 'Ended early'}: ${number(sweep.done)} of ` +
      `${plural(sweep.expected, 'run')} are done.`));
  }
  const held = sweep.rows.length + sweep.outOfSample.length;
  if (held < sweep.done) {
    result.push(el('p', { class: 'notice' }, `The page holds the best ${number(held)} of ` +
      `${plural(sweep.done, 'run')}; results.csv has them all.`));
  }
  if (!isWalk && sweep.combinations > 20) {
    result.push(el('p', { class: 'notice' },
      `The best of ${number(sweep.combinations)} tries looks better than it is: part of it is ` +
      'chance. Look for a wide field of good neighbours, and try the choice on other data: ',
      el('code', {}, '--walk-forward'), '.'));
  }
  return result;
}

function dataCard() {
  const pair = (name, value) => el('div', {}, el('dt', {}, name), el('dd', {}, value));
  return card('What was swept', null, el('dl', { class: 'pairs' },
    pair('Strategy', sweep.strategy), pair('Fixed parameters', el('code', {},
      JSON.stringify(sweep.params))),
    ...sweep.ranges.map((range) => pair(range.name, range.values.length > 12
      ? `${range.values[0]} … ${range.values[range.values.length - 1]} ` +
        `(${plural(range.values.length, 'value')})` : range.values.join(', '))),
    ...sweep.data.map((series) => pair(`${series.code} ${series.frequency}`,
      `${plural(series.records, 'record')}, ${spanText(series)} UTC, ${series.files}`))));
}

let mapCard = null;
const rowsCard = new RowsCard((row) => {
  if (mapCard) mapCard.mark(row);
});
mapCard = new MapCard((test, name) => {
  rowsCard.show(test, name);
  rowsCard.node.scrollIntoView({ block: 'nearest' });
});
document.getElementById('tools').append(...theme.controls());
document.getElementById('main').append(el('div', { class: 'page' },
  el('div', { class: 'title' }, el('h1', {}, sweep.strategy, el('span', { class: 'tag' },
    `ranked by ${sweep.figures[sweep.rank].title.toLowerCase()}`))),
  ...notices(), tiles(), ...(isWalk ? [windowsCard()] : []), mapCard.node, rowsCard.node,
  dataCard()));
mapCard.showBest();
document.getElementById('foot').textContent = `orvane ${sweep.version}`;
document.title = `${sweep.strategy} – sweep`;
