// The trades as marks on the candles: the fewer there are in view, the more each one tells.

const MOST_ARROWS = 150;
const DOT_WIDTH = 4;     // Pixels of a dot. Where there is less for each, dots would hide candles.
const TEXT_WIDTH = 110;  // Pixels that a mark's text takes, with some room beside it.

/**
 * The trades of one code, each with its candle. Those of one side on one candle have one mark: a
 * position that is turned round is closed and opened at once.
 */
class TradeMarks {
  constructor(trades, code, candles, firstCandle) {
    this.trades = trades;
    this.groups = [];  // Ascending by candle: the candle, the side and the trades.
    this.groupOf = new Map();
    const place = trades.codes.indexOf(code);
    const at = [];
    for (let i = 0; i < trades.time.length; ++i) {
      if (trades.code[i] !== place) continue;
      at.push([firstCandle + candleOf(candles, trades.time[i], trades.price[i]), i]);
    }
    at.sort((a, b) => a[0] - b[0] || trades.isBuy[a[1]] - trades.isBuy[b[1]] || a[1] - b[1]);
    for (const [candle, trade] of at) {
      const isBuy = trades.isBuy[trade] === 1;
      const last = this.groups[this.groups.length - 1];
      if (last && last.candle === candle && last.isBuy === isBuy) last.trades.push(trade);
      else this.groups.push({ candle, isBuy, trades: [trade] });
      this.groupOf.set(trade, this.groups[this.groups.length - 1]);
    }
    this.starts = this.groups.map((group) => group.candle);
  }

  /**
   * How the marks of a view are drawn, those that are not mere dots, and of how many trades none
   * is drawn. Candles are `spacing` pixels apart.
   */
  inView(axis, from, to, spacing) {
    const begin = upperBound(this.starts, from - 1);
    const end = upperBound(this.starts, to);
    const count = end - begin;
    const room = (to - from + 1) * spacing;
    if (count > MOST_ARROWS && count * DOT_WIDTH > room) {
      const hidden = this.groups.slice(begin, end).reduce((sum, group) => sum + group.trades.length,
        0);
      return { style: 'none', marks: [], hidden };
    }
    if (count > MOST_ARROWS) return { style: 'dots', marks: [], hidden: 0 };
    const isFree = (i, other) => !this.groups[other] ||
      Math.abs(this.groups[other].candle - this.groups[i].candle) * spacing >= TEXT_WIDTH;
    const marks = [];
    for (let i = begin; i < end; ++i) {
      const group = this.groups[i];
      const hasRoom = isFree(i, i - 1) && isFree(i, i + 1);
      marks.push(this.mark(axis, group, hasRoom ? groupText(this.trades, group) : undefined));
    }
    return { style: 'arrows', marks, hidden: 0 };
  }

  mark(axis, { candle, isBuy, trades }, text, size = 1) {
    return {
      id: String(trades[0]), time: axis.chart[candle], color: theme.color(isBuy ? 'buy' : 'sell'),
      shape: isBuy ? 'arrowUp' : 'arrowDown', position: isBuy ? 'belowBar' : 'aboveBar', size, text,
    };
  }

  /** The prices of the buys, or of the sells, as points: the last one of each candle. */
  dots(axis, isBuy) {
    return this.groups.filter((group) => group.isBuy === isBuy).map((group) => ({
      time: axis.chart[group.candle],
      value: this.trades.price[group.trades[group.trades.length - 1]],
    }));
  }
}

/** Such as "+120 · open 2": what a mark can carry. */
function groupText(trades, group) {
  let profit = 0;
  let opened = 0;
  let hasClosed = false;
  for (const i of group.trades) {
    if (trades.offset[i] === 'open') {
      opened += trades.volume[i];
    } else {
      profit += trades.profit[i];
      hasClosed = true;
    }
  }
  const parts = [];
  if (hasClosed) parts.push(signed(short(profit), profit));
  if (opened) parts.push(`open ${quantity(Number(opened.toPrecision(12)))}`);
  return parts.join(' · ');
}

const OFFSETS = { open: 'open', close: 'close', closeToday: 'close today' };

/** Such as "Sell 2 @ 3,450.20". */
function tradeTitle(trades, i, digits) {
  return `${trades.isBuy[i] ? 'Buy' : 'Sell'} ${quantity(trades.volume[i])} @ ` +
    number(trades.price[i], digits, 0);
}
