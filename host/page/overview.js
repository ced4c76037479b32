// All runners of a run side by side.

const MOST_LINES = 24;

const HUES = [217, 26, 166, 282, 344, 46, 193, 112];

/** A colour for each line, to be told apart in light and in dark. */
function lineColor(at) {
  const isDark = document.documentElement.dataset.theme === 'dark';
  const turn = Math.floor(at / HUES.length);
  return `hsl(${HUES[at % HUES.length]}, ${isDark ? 62 : 64}%, ` +
    `${(isDark ? 66 : 44) + (isDark ? -1 : 1) * 14 * turn}%)`;
}

/** The returns of several entries on one axis, and the sum of the accounts below. */
class OverviewChart {
  constructor(host, entries) {
    this.host = host;
    this.entries = entries;
    this.lines = [];
    this.build();
    this.redraw = () => this.recolor();
    theme.listeners.add(this.redraw);
  }

  destroy() {
    theme.listeners.delete(this.redraw);
    this.legend.remove();
    this.chart.remove();
  }

  build() {
    const times = new Set();
    for (const entry of this.entries) {
      const { time } = entry.trading.equity;
      // All in all some thousands: enough for what a screen can show.
      const step = Math.max(1, Math.floor(time.length / 2000));
      for (let i = 0; i < time.length; i += step) times.add(time[i]);
      if (time.length) times.add(time[time.length - 1]);
    }
    let utc = [...times].sort((a, b) => a - b);
    const step = Math.max(1, Math.ceil(utc.length / 4000));
    utc = utc.filter((_, i) => i % step === 0 || i === utc.length - 1);
    this.axis = axisOf(utc);
    this.width = usualStep(this.axis.utc);
    this.chart = charts.createChart(this.host, chartOptions(this.axis, this.width));
    for (const entry of this.entries) {
      const { equity } = onAxis(this.axis, entry.trading.equity);
      const start = entry.trading.startBalance;
      const line = this.chart.addSeries(charts.LineSeries, {
        lineWidth: 2, priceLineVisible: false, lastValueVisible: this.entries.length <= 8,
        title: '',
        priceFormat: { type: 'custom', formatter: (value) => percent(value), minMove: 0.0001 },
      });
      line.setData(this.axis.chart.map((time, i) => (equity[i] === null ? { time }
        : { time, value: equity[i] / start - 1 })));
      this.lines.push(line);
    }
    this.legend = el('div', { class: 'names' });
    this.host.before(this.legend);
    this.chart.subscribeCrosshairMove((event) => this.showValues(event));
    this.recolor();
    showWhole(this.chart, this.axis);
  }

  recolor() {
    const options = chartOptions(this.axis, this.width);
    delete options.timeScale.minBarSpacing;
    this.chart.applyOptions(options);
    this.lines.forEach((line, at) => line.applyOptions({
      color: lineColor(at),
    }));
    this.showValues(null);
  }

  showValues(event) {
    const values = this.lines.map((line, at) => {
      const point = event && event.seriesData ? event.seriesData.get(line) : null;
      const own = this.entries[at].trading.figures.return;
      return point && point.value !== undefined ? point.value : own;
    });
    this.legend.replaceChildren(...this.entries.map((entry, at) => el('span', {},
      el('i', { class: 'swatch', style: `background: ${lineColor(at)}` }),
      entry.name, ' ', colored(signedPercent(values[at])))));
  }
}

class OverviewPage {
  constructor() {
    this.node = el('div', { class: 'page' });
    this.traders = run.entries.filter((entry) => entry.trading);
    const total = run.total ? { ...run.total, startBalance: run.total.figures.startBalance } : null;
    this.node.append(this.head(), ...notices(null),
      tileRows(total && this.traders.length ? tradingTiles(total) : this.quietTiles()));
    if (this.traders.length) {
      this.chartHost = el('div', { class: 'chart low' });
      const left = this.traders.length - MOST_LINES;
      this.node.append(card('Returns of the runners', el('span', { class: 'aside' },
        left > 0 ? `the ${MOST_LINES} with the largest and the smallest return` : ''),
      this.chartHost));
    }
    this.table = this.makeTable();
    this.node.append(card('Runners', el('span', { class: 'aside' },
      plural(run.entries.length, 'entry').replace('entrys', 'entries')), this.table.node));
    if (total && this.traders.length) {
      this.node.append(el('div', { class: 'wide-and-narrow' },
        monthsCard(total.months), figuresCard(total.figures, total.currency)));
    }
    this.node.append(...[accountsCard(), dataCard()].filter(Boolean));
  }

  start() {
    if (!this.chartHost) return;
    let shown = this.traders;
    if (shown.length > MOST_LINES) {
      const sorted = [...shown].sort((a, b) => b.trading.figures.return - a.trading.figures.return);
      shown = [...sorted.slice(0, MOST_LINES / 2), ...sorted.slice(-MOST_LINES / 2)];
    }
    this.chart = new OverviewChart(this.chartHost, shown);
  }

  destroy() {
    if (this.chart) this.chart.destroy();
    this.table.destroy();
  }

  head() {
    // What was played, which may be less than the data have.
    const times = (name) =>
      run.entries.map((entry) => (entry.span || {})[name]).filter(Boolean).sort();
    const begins = times('begin'), ends = times('end');
    const tag = el('span', { class: `tag ${run.outcome === 'completed' ? 'good' : 'bad'}` },
      run.outcome);
    return el('div', { class: 'title' }, el('h1', {}, 'Overview', tag),
      el('p', { class: 'muted' }, [plural(run.entries.filter((entry) =>
        entry.kind === 'runner').length, 'runner'),
      spanText(playedSpan({ begin: begins[0], end: ends[ends.length - 1] })), run.timeZone, run.mode]
        .filter(Boolean).join(' · ')));
  }

  quietTiles() {
    const sum = (key) => run.entries.reduce((all, entry) => all + (entry[key] || 0), 0);
    return [tile('Runners', number(run.entries.length), ''),
      tile('Bars', number(sum('bars')), 'received by all'),
      tile('Ticks', number(sum('ticks')), 'received by all'),
      tile('Call-backs', number(sum('eventCount')), 'of all runners')];
  }

  makeTable() {
    const { entries } = run;
    const figure = (i, name) => (entries[i].trading ? entries[i].trading.figures[name] : null);
    const column = (title, value, show, more = {}) => ({ title, isNumber: true, value, show,
      ...more });
    const share = (title, name, more) => column(title, (i) => figure(i, name),
      (i) => signedPercent(figure(i, name)),
      { tone: (i) => tone(signedPercent(figure(i, name))), ...more });
    const ratio = (title, name) => column(title, (i) => figure(i, name),
      (i) => number(figure(i, name), 2));
    const whyNotYearly = (i) => figure(i, 'annualNote');
    const yearly = (title, name) => {
      const value = (i) => (whyNotYearly(i) ? null : figure(i, name));
      return column(title, value, (i) => number(value(i), 2),
        { title_of: whyNotYearly });
    };
    const fall = (i) => (entries[i].trading ? entries[i].trading.figures.maxDrawdown.share : null);
    const fallText = (i) => (fall(i) === null ? NONE : percent(-fall(i)));
    const columns = [
      { title: 'Runner', value: (i) => entries[i].name,
        show: (i) => el('a', { href: pageLink(entries[i]) }, entries[i].name) },
      { title: 'Strategy', value: (i) => entries[i].strategy || '',
        show: (i) => (entries[i].strategy || '').split('/').pop() },
      { title: 'Status', value: (i) => entries[i].status || '',
        show: (i) => entries[i].status || '', tone: (i) =>
          (entries[i].status === 'Error' ? 'down' : '') },
    ];
    if (this.traders.length) {
      columns.push(
        column('Fills', (i) => figure(i, 'fills'), (i) => number(figure(i, 'fills'))),
        column('Final equity', (i) => figure(i, 'finalEquity'),
          (i) => money(figure(i, 'finalEquity'))),
        share('Return', 'return'),
        share('Annual', 'annualReturn', { title_of: whyNotYearly }), yearly('Sharpe', 'sharpe'),
        column('Drawdown', fall, fallText, { tone: (i) => tone(fallText(i)) }),
        column('Wins', (i) => figure(i, 'winRate'), (i) => percent(figure(i, 'winRate'), 1)),
        ratio('Factor', 'profitFactor'));
    } else {
      columns.push(
        column('Bars', (i) => entries[i].bars, (i) => number(entries[i].bars)),
        column('Ticks', (i) => entries[i].ticks, (i) => number(entries[i].ticks)),
        column('Call-backs', (i) => entries[i].eventCount, (i) => number(entries[i].eventCount)),
        column('Notifications', (i) => entries[i].notifications,
          (i) => number(entries[i].notifications)));
    }
    columns.push(column('Exceptions', (i) => (entries[i].exceptions || { count: 0 }).count,
      (i) => number((entries[i].exceptions || { count: 0 }).count), { tone: (i) =>
        ((entries[i].exceptions || { count: 0 }).count ? 'down' : 'muted') }));
    return new DataTable({ label: 'Runners', columns, count: entries.length, mostRows: 16,
      onChoose: (i) => { location.hash = pageLink(entries[i]); } });
  }
}
