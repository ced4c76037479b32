// The table of an entry's trades with its filters.

/** The position of the entry in a fill's code after it: bought less sold. */
function positionsAfter(trades) {
  const held = trades.codes.map(() => 0);
  return trades.time.length === 0 ? [] : Array.from(trades.time, (_, i) => {
    held[trades.code[i]] += (trades.isBuy[i] ? 1 : -1) * trades.volume[i];
    return Number(held[trades.code[i]].toPrecision(12));
  });
}

class TradeTable {
  /** `onChoose` hears of the trade that was chosen. */
  constructor(entry, onChoose) {
    this.trades = entry.trading.trades;
    this.currency = entry.trading.currency;
    this.choice = { text: '', code: '', side: '', offset: '', result: '', inView: false };
    this.range = [-Infinity, Infinity];
    this.summary = el('output', { class: 'summary' });
    this.table = new DataTable({
      label: 'Trades', columns: this.columns(), count: this.trades.time.length, onChoose,
    });
    this.table.node.classList.add('trades');
    this.node = card('Trades', this.summary, this.filters(), this.table.node);
    this.apply();
  }

  destroy() {
    this.table.destroy();
  }

  columns() {
    const { trades } = this;
    const digits = trades.codes.map((_, place) =>
      decimalsOf(trades.price.filter((_, i) => trades.code[i] === place)));
    const position = positionsAfter(trades);
    const isClosing = (i) => trades.offset[i] !== 'open';
    const columns = [
      { title: '#', isNumber: true, value: (i) => i, show: (i) => number(i + 1) },
      { title: 'Time', value: (i) => trades.time[i],
        show: (i) => timeText(trades.time[i]),
        title_of: (i) => new Date(trades.time[i]).toISOString() },
      { title: 'Code', value: (i) => trades.codes[trades.code[i]],
        show: (i) => trades.codes[trades.code[i]] },
      { title: 'Side', value: (i) => trades.isBuy[i],
        show: (i) => el('span', { class: trades.isBuy[i] ? 'side buy' : 'side sell' },
          trades.isBuy[i] ? 'Buy' : 'Sell') },
      { title: 'Offset', value: (i) => trades.offset[i],
        show: (i) => OFFSETS[trades.offset[i]] || trades.offset[i] },
      { title: 'Price', isNumber: true, value: (i) => trades.price[i],
        show: (i) => number(trades.price[i], 8, digits[trades.code[i]]) },
      { title: 'Volume', isNumber: true, value: (i) => trades.volume[i],
        show: (i) => quantity(trades.volume[i]) },
      { title: 'Position', isNumber: true, hint: 'What is held of the code after the fill',
        value: (i) => position[i], show: (i) => quantity(position[i]) },
      { title: 'Fee', isNumber: true, value: (i) => trades.fee[i],
        show: (i) => money(trades.fee[i]) },
      { title: 'Profit', isNumber: true, hint: 'Of what it closed, before fees',
        value: (i) => (isClosing(i) ? trades.profit[i] : null),
        show: (i) => (isClosing(i) ? signedMoney(trades.profit[i]) : ''),
        tone: (i) => tone(signedMoney(trades.profit[i])) },
      { title: 'Order', isNumber: true, value: (i) => trades.order[i],
        show: (i) => String(trades.order[i]) },
    ];
    if (trades.grid) {
      columns.push({ title: 'Grid', value: (i) => trades.grid[i], show: (i) => trades.grid[i] });
    }
    return columns;
  }

  filters() {
    const { trades, choice } = this;
    const pick = (key) => (value) => {
      choice[key] = value;
      this.apply();
    };
    const box = el('div', { class: 'filters' },
      el('input', {
        type: 'search', placeholder: 'Find code, time, order …', 'aria-label': 'Find trades',
        input: (event) => pick('text')(event.target.value.trim().toLowerCase()),
      }));
    if (trades.codes.length > 1) {
      box.append(chooser('Code', [['', 'All codes'],
        ...[...trades.codes].sort().map((code) => [code, code])], '', pick('code')));
    }
    box.append(
      segmented('Side', [['', 'Both'], ['1', 'Buys'], ['0', 'Sells']], '', pick('side')),
      segmented('Offset', [['', 'All'], ['open', 'Opening'], ['close', 'Closing']], '',
        pick('offset')),
      segmented('Result', [['', 'Any'], ['won', 'Won'], ['lost', 'Lost']], '', pick('result')),
      toggle('In view', false, pick('inView'), 'Only those that the chart shows now'));
    return box;
  }

  /** The chart shows another span. */
  setRange(from, to) {
    this.range = [from, to];
    if (this.choice.inView) this.apply();
  }

  isShown(i) {
    const { trades, choice } = this;
    if (choice.side && trades.isBuy[i] !== Number(choice.side)) return false;
    if (choice.offset && (trades.offset[i] === 'open') !== (choice.offset === 'open')) return false;
    if (choice.code && trades.codes[trades.code[i]] !== choice.code) return false;
    const net = trades.profit[i] - trades.fee[i];
    const isClosing = trades.offset[i] !== 'open';
    if (choice.result === 'won' && !(isClosing && net > 0)) return false;
    if (choice.result === 'lost' && !(isClosing && net < 0)) return false;
    if (choice.inView && (trades.time[i] < this.range[0] || trades.time[i] > this.range[1]))
      return false;
    return !choice.text || this.haystack(i).includes(choice.text);
  }

  haystack(i) {
    const { trades } = this;
    return [trades.codes[trades.code[i]], timeText(trades.time[i]), trades.order[i],
      trades.isBuy[i] ? 'buy' : 'sell', OFFSETS[trades.offset[i]] || trades.offset[i]]
      .join(' ').toLowerCase();
  }

  apply() {
    const { choice } = this;
    const isAll = !choice.text && !choice.code && !choice.side && !choice.offset &&
      !choice.result && !choice.inView;
    this.table.setFilter(isAll ? null : (i) => this.isShown(i));
    let net = 0;
    for (const i of this.table.rows) net += this.trades.profit[i] - this.trades.fee[i];
    const count = this.table.rows.length;
    this.summary.replaceChildren(
      isAll ? plural(count, 'fill') : `${number(count)} of ${plural(this.table.count, 'fill')}`,
      el('span', { class: 'dot' }, '·'), 'net ',
      el('b', { class: tone(signedMoney(net)) }, signedMoney(net)),
      this.currency ? ` ${this.currency}` : '');
  }
}
