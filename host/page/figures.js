// The figures of a run: the main ones large, all of them as a list.

/** A figure that is coloured by its sign. */
function signedTile(label, text, below) {
  return tile(label, text, below, { className: tone(text) });
}

/** The figures that are told by the year; a short span has none, and the hint says why. */
function yearlyTiles({ annualNote, annualReturn, annualVolatility, sharpe, sortino }) {
  if (annualNote) {
    return ['Annual return', 'Sharpe'].map((name) =>
      tile(name, NONE, 'too few days', { hint: annualNote }));
  }
  return [
    signedTile('Annual return', signedPercent(annualReturn),
      `volatility ${percent(annualVolatility)}`),
    tile('Sharpe', number(sharpe, 2), `Sortino ${number(sortino, 2)}`),
  ];
}

function tradingTiles(trading) {
  const { figures } = trading;
  const fall = figures.maxDrawdown;
  const [annual, sharpe] = yearlyTiles(figures);
  return [
    signedTile('Return', signedPercent(figures.return),
      [signedMoney(figures.profit), trading.currency].filter(Boolean).join(' ')),
    annual,
    signedTile('Max drawdown', percent(fall.share === null ? null : -fall.share),
      fall.trough ? `trough ${reportDate(fall.trough)}` : 'never below a peak'),
    sharpe,
    tile('Win rate', percent(figures.winRate, 1), `of ${plural(figures.closings, 'closing fill')}`),
    tile('Profit factor', number(figures.profitFactor, 2),
      `mean ${short(figures.meanWin)} / ${short(figures.meanLoss)}`),
    tile('Fills', number(figures.fills),
      trading.orders ? `of ${plural(trading.orders.count, 'order')}`
        : `on ${plural(trading.accounts, 'account')}`),
    tile('Fees', money(figures.fees), `turnover ${short(figures.turnover)}`),
  ];
}

/** What can be said of a run that sent no order. */
function quietTiles(entry) {
  const span = entry.span || {};
  const tiles = [];
  if (entry.bars) tiles.push(tile('Bars', number(entry.bars), 'received'));
  if (entry.ticks) tiles.push(tile('Ticks', number(entry.ticks), 'received'));
  tiles.push(tile('Call-backs', number(entry.eventCount),
    `of ${plural(Object.keys(entry.events || {}).length, 'kind')}`));
  const published = ['quotes', 'bars', 'records'].map((kind) => entry.published
    ? entry.published[kind].live + entry.published[kind].history : 0);
  if (entry.published) {
    tiles.push(tile('Published', number(published.reduce((a, b) => a + b)),
      `${number(published[0])} quotes, ${number(published[1])} bars`));
  }
  tiles.push(tile('Notifications', number(entry.notifications), 'to the host'));
  if (span.begin) {
    const days = (Date.parse(span.end) - Date.parse(span.begin)) / DAY;
    tiles.push(tile('Span', days >= 2 ? `${number(days)} days` : `${number(days * 24, 1)} hours`,
      `from ${reportTime(span.begin)}`));
  }
  return tiles;
}

/** Pairs of name and value. */
function pairs(rows) {
  return el('dl', { class: 'pairs' }, ...rows.filter((row) => row).map(([name, value, hint]) =>
    el('div', { title: hint }, el('dt', {}, name), el('dd', {}, value))));
}

function figuresCard(figures, currency) {
  const fall = figures.maxDrawdown;
  return card('Figures', el('span', { class: 'aside' }, currency), pairs([
    ['Start balance', money(figures.startBalance)],
    ['Final equity', money(figures.finalEquity)],
    ['Profit', signedMoney(figures.profit)],
    ['Annual volatility', percent(figures.annualVolatility),
      figures.annualNote ||
        'Sample standard deviation of the daily returns, times the root of 252'],
    ['Deepest fall', `${money(fall.amount)}`, 'From a peak to the trough after it'],
    ['Peak', reportTime(fall.peak)],
    ['Trough', reportTime(fall.trough)],
    ['Recovery', fall.trough ? (fall.recovery ? reportTime(fall.recovery) : 'not yet') : NONE],
    ['Mean win', money(figures.meanWin), 'Of a closing fill that won, after its fee'],
    ['Mean loss', money(figures.meanLoss), 'Of a closing fill that lost, after its fee'],
    ['Turnover', money(figures.turnover), 'Price times volume times multiplier of all fills'],
    ['Exposure', percent(figures.exposure, 1), 'Share of the time with a position'],
  ]));
}
