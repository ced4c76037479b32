// The page of one runner, or of what else was traded on an account.

/** The spans that the chart offers, as far as the data is longer. */
const SPANS = [['1D', DAY], ['1W', 7 * DAY], ['1M', 30.4 * DAY], ['3M', 91.3 * DAY],
  ['1Y', 365.25 * DAY], ['5Y', 5 * 365.25 * DAY]];

/** The series that an entry's charts may show: what it received, else all of what it traded. */
function seriesOf(entry) {
  const own = entry.series.map((place) => run.series[place]);
  const { codes = [] } = entry.trading ? entry.trading.trades : {};
  const more = codes.filter((code) => !own.some((series) => series.code === code))
    .map((code) => run.series.find((series) => series.code === code)).filter(Boolean);
  const isTraded = (series) => Number(codes.includes(series.code));
  const all = [...own, ...more];
  return all.map((series, at) => ({ series, at }))
    .sort((a, b) => isTraded(b.series) - isTraded(a.series) || a.at - b.at)
    .map((each) => each.series);
}

function seriesName(series) {
  return series.kind === 'ticks' ? `${series.code} ticks` : `${series.code} ${series.frequency}`;
}

/** How the candles came about. */
function seriesNote(series) {
  if (!series) return '';
  const { widthMs, records, passedOver, candles } = series;
  const what = plural(records, series.kind === 'ticks' ? 'tick' : 'bar');
  const late = passedOver ? `; ${plural(passedOver, 'record')} that came twice, late or ` +
    'without a price not shown' : '';
  return (widthMs ? `${what} as ${number(candles.time.length)} candles of ${widthText(widthMs)}`
    : what) + late;
}

class RunnerPage {
  constructor(entry) {
    this.entry = entry;
    this.all = seriesOf(entry);
    this.node = el('div', { class: 'page' });
    this.node.append(this.head(), ...notices(entry),
      tileRows(entry.trading ? tradingTiles(entry.trading) : quietTiles(entry)));
    if (entry.trading) this.trades = new TradeTable(entry, (i) => this.showTrade(i));
    if (this.all.length || entry.trading) this.node.append(this.chartCard());
    this.node.append(...this.rest().filter(Boolean));
  }

  /** Once the page stands in the document, since charts ask for their size. */
  start() {
    if (this.chartHost) this.showSeries(this.all[0]);
  }

  destroy() {
    if (this.chart) this.chart.destroy();
    if (this.trades) this.trades.destroy();
  }

  head() {
    const { entry } = this;
    const tags = [];
    if (entry.status) {
      const isGood = entry.status === 'Stopped' || entry.status === 'Finished';
      tags.push(el('span', { class: `tag ${isGood ? 'good' : 'bad'}` }, entry.status));
    }
    if (entry.server) tags.push(el('span', { class: 'tag' }, 'server'));
    if (entry.trading) tags.push(el('span', { class: 'tag' }, `account ${entry.trading.account}`));
    const span = spanText(playedSpan(entry.span || {}));
    const under = [entry.strategy && entry.strategy !== entry.name ? entry.strategy : null, span,
      run.timeZone, run.mode].filter(Boolean).join(' · ');
    return el('div', { class: 'title' },
      el('h1', {}, entry.name, ...tags), el('p', { class: 'muted' }, under));
  }

  chartCard() {
    this.rangeText = el('output', { class: 'range', 'aria-label': 'Shown span' });
    this.note = el('p', { class: 'card-note' });
    this.chartHost = el('div', { class: this.all.length ? 'chart' : 'chart low' });
    this.tools = el('div', { class: 'chart-tools' });
    this.chartNode = el('section', { class: 'card chart-card' },
      this.tools, this.chartHost, this.note);
    return this.chartNode;
  }

  fillTools() {
    const { entry, series } = this;
    const parts = [];
    if (this.all.length > 1) {
      parts.push(chooser('Series', this.all.map((one, at) => [String(at), seriesName(one)]),
        String(this.all.indexOf(series)), (at) => this.showSeries(this.all[Number(at)])));
    }
    const { utc } = this.chart.axis;
    const length = utc[utc.length - 1] - utc[0];
    const spans = SPANS.filter(([, ms]) => ms < 0.9 * length && ms > 20 * this.chart.width);
    parts.push(el('div', { class: 'segmented', role: 'group', 'aria-label': 'Span' },
      ...spans.map(([name, ms]) => el('button', {
        type: 'button', click: () => this.chart.showSpan(ms),
      }, name)),
      el('button', { type: 'button', click: () => this.chart.showAll() }, 'All')));
    if (series && entry.trading) {
      parts.push(toggle('Trades', true, (isOn) => this.chart.setTradesShown(isOn)));
    }
    if (series) {
      parts.push(toggle('Log', false, (isOn) => this.chart.setLogarithmic(isOn),
        'Logarithmic prices'));
    }
    if (series && entry.trading) {
      const step = (by) => {
        const next = this.trades.table.neighbour(by);
        if (next !== null) this.trades.table.choose(next);
      };
      this.position = el('span', { class: 'position' }, 'trade');
      parts.push(el('div', { class: 'segmented stepper', role: 'group', 'aria-label': 'Trades' },
        el('button', { type: 'button', 'aria-label': 'Previous trade', click: () => step(-1) },
          '‹'), this.position,
        el('button', { type: 'button', 'aria-label': 'Next trade', click: () => step(1) }, '›')));
    }
    this.tools.replaceChildren(...parts, this.rangeText);
  }

  showSeries(series) {
    if (this.chart) this.chart.destroy();
    this.series = series;
    this.note.textContent = seriesNote(series);
    this.chart = new RunChart(this.chartHost, this.entry, series, {
      onRange: (from, to, count) => this.showRange(from, to, count),
      onTrade: (i) => this.showTrade(i, true),
    });
    this.fillTools();
  }

  showRange(from, to, count) {
    const text = this.chart.width < DAY ? timeText : dateText;
    this.rangeText.textContent = `${text(from)} – ${text(to)}`;
    this.rangeText.title = `${plural(count, 'candle')} in view`;
    if (this.trades) this.trades.setRange(from, to + this.chart.width);
  }

  /** Shows a trade in the chart and in the table. `isFromChart`: where it is seen already. */
  showTrade(i, isFromChart = false) {
    const { trades } = this.entry.trading;
    const code = trades.codes[trades.code[i]];
    if (!this.series || this.series.code !== code) {
      const series = this.all.find((one) => one.code === code);
      if (!series) return;
      this.showSeries(series);
    }
    this.chart.select(i);
    this.chartHost.dataset.trade = String(i);
    if (this.position) {
      this.position.textContent = `${number(i + 1)} / ${number(trades.time.length)}`;
    }
    if (isFromChart) {
      this.trades.table.mark(i);
      return;
    }
    const box = this.chartNode.getBoundingClientRect();
    const isSeen = box.top > 40 && box.top + 0.6 * box.height < window.innerHeight;
    if (!isSeen) this.chartNode.scrollIntoView({ behavior: 'smooth', block: 'start' });
  }

  rest() {
    const { entry } = this;
    const parts = [];
    if (entry.trading) {
      const { months, figures, currency } = entry.trading;
      parts.push(el('div', { class: 'wide-and-narrow' },
        months.length ? monthsCard(months) : null, figuresCard(figures, currency)));
      parts.push(this.trades.node);
    }
    const cards = [paramsCard(entry), envCard(entry), eventsCard(entry)].filter(Boolean);
    if (cards.length) parts.push(el('div', { class: 'columns' }, ...cards));
    parts.push(receivedCard(entry), recordsCard(entry), dataCard());
    if (entry.digest) {
      parts.push(el('p', { class: 'digest' }, 'Digest of the run ',
        el('code', {}, entry.digest)));
    }
    return parts;
  }
}
