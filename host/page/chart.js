// Candles, trades, equity and drawdown, one below the other on one time axis.

const charts = LightweightCharts;

/** What all charts of the page have in common. */
function chartOptions(axis, width) {
  const isIntraday = width < DAY;
  return {
    autoSize: true,
    layout: {
      background: { color: 'transparent' },
      fontFamily: getComputedStyle(document.body).fontFamily, fontSize: 12,
      textColor: theme.color('muted'),
      panes: { separatorColor: theme.color('line'), separatorHoverColor: theme.color('hover') },
      attributionLogo: true,
    },
    grid: { vertLines: { color: theme.color('grid') }, horzLines: { color: theme.color('grid') } },
    crosshair: {
      mode: charts.CrosshairMode.Normal,
      vertLine: { color: theme.color('muted'), labelBackgroundColor: theme.color('label') },
      horzLine: { color: theme.color('muted'), labelBackgroundColor: theme.color('label') },
    },
    rightPriceScale: {
      borderColor: theme.color('line'), minimumWidth: 84, entireTextOnly: true,
    },
    timeScale: {
      borderColor: theme.color('line'), timeVisible: isIntraday, secondsVisible: width < 60000,
      minBarSpacing: 0.001, rightOffset: 0,
      tickMarkFormatter: (time, kind) => tickText(time, kind),
    },
    localization: { timeFormatter: (time) => chartTimeText(axis, time, isIntraday) },
  };
}

const LABEL_ROOM = 28;  // Pixels: half a label of the time axis, so that the first is not cut.

/** Shows all, or all from a place of the axis on. */
function showWhole(chart, axis, first = 0) {
  const room = chart.timeScale().width();
  const last = axis.utc.length - 1;
  const before = (last + 1 - first) * LABEL_ROOM / (room - LABEL_ROOM);
  if (room < 4 * LABEL_ROOM || last < 1) chart.timeScale().fitContent();
  else
    chart.timeScale().setVisibleLogicalRange({ from: first - 0.5 - before, to: last + 0.5 });
}

/** A label of the time axis. Its times are on the run's clock already. */
function tickText(time, kind) {
  const date = new Date(time * 1000);
  switch (kind) {
    case charts.TickMarkType.Year: return String(date.getUTCFullYear());
    case charts.TickMarkType.Month: return MONTHS[date.getUTCMonth()];
    case charts.TickMarkType.DayOfMonth:
      return `${date.getUTCDate()} ${MONTHS[date.getUTCMonth()]}`;
    case charts.TickMarkType.TimeWithSeconds:
      return `${pad(date.getUTCHours())}:${pad(date.getUTCMinutes())}:` +
        pad(date.getUTCSeconds());
    default: return `${pad(date.getUTCHours())}:${pad(date.getUTCMinutes())}`;
  }
}

function chartTimeText(axis, time, isIntraday) {
  const at = Math.max(0, upperBound(axis.chart, time + 1e-6) - 1);
  return (isIntraday ? timeText : dateText)(axis.utc[at]);
}

/** The chart of one entry: what it received, and what it made of it. */
class RunChart {
  /** `onRange` hears of the visible span, `onTrade` of a click on a mark. */
  constructor(host, entry, series, { onRange, onTrade }) {
    this.host = host;
    this.entry = entry;
    this.series = series;
    this.onRange = onRange;
    this.onTrade = onTrade;
    this.trading = entry.trading;
    this.selected = null;
    this.showsTrades = true;
    this.isLogarithmic = false;
    this.hidden = 0;
    this.build();
    this.redraw = () => this.recolor();
    theme.listeners.add(this.redraw);
  }

  destroy() {
    theme.listeners.delete(this.redraw);
    this.observer.disconnect();
    this.chart.remove();
    this.host.replaceChildren();
  }

  build() {
    const candles = this.series ? this.series.candles : null;
    this.axis = makeAxis(candles, this.trading ? this.trading.equity : null);
    this.width = candles ? usualStep(candles.time) : usualStep(this.axis.utc);
    this.digits = candles ? decimalsOf(candles.open, candles.close) : 2;
    this.chart = charts.createChart(this.host, chartOptions(this.axis, this.width));
    this.legends = [];
    if (candles) this.addCandles(candles);
    if (this.trading) this.addEquity();
    this.chart.panes().forEach((pane, i) => pane.setStretchFactor(
      candles && i === 0 ? 6 : i === this.chart.panes().length - 1 ? 1.6 : 2.4));
    this.chart.timeScale().subscribeVisibleLogicalRangeChange(() => this.onView());
    this.chart.subscribeCrosshairMove((event) => this.showLegends(event));
    this.chart.subscribeClick((event) => {
      const id = event.hoveredObjectId;
      if (id !== undefined && id !== null) this.onTrade(Number(id));
    });
    this.observer = new ResizeObserver(() => this.placeLegends());
    this.observer.observe(this.host);
    this.recolor();
    this.showPlayed();
    requestAnimationFrame(() => this.placeLegends());
  }

  addLegend(pane) {
    const node = el('div', { class: 'legend' });
    this.host.append(node);
    this.legends.push({ pane, node });
    return node;
  }

  addCandles(candles) {
    const { axis } = this;
    const step = 10 ** -this.digits;
    this.candles = this.chart.addSeries(charts.CandlestickSeries, {
      priceFormat: { type: 'custom', minMove: step,
        formatter: (price) => number(price, this.digits) },
      priceLineVisible: false,
    }, 0);
    this.candles.setData(Array.from(candles.time, (_, i) => ({
      time: axis.chart[axis.firstCandle + i], open: candles.open[i], high: candles.high[i],
      low: candles.low[i], close: candles.close[i],
    })));
    if (candles.volume.some((volume) => volume > 0)) {
      this.volume = this.chart.addSeries(charts.HistogramSeries, {
        priceScaleId: 'volume', priceFormat: { type: 'custom', formatter: short },
        lastValueVisible: false, priceLineVisible: false,
      }, 0);
      this.volume.priceScale().applyOptions({ scaleMargins: { top: 0.84, bottom: 0 } });
      this.candles.priceScale().applyOptions({ scaleMargins: { top: 0.1, bottom: 0.2 } });
    }
    if (this.trading) {
      this.marks = new TradeMarks(this.trading.trades, this.series.code, candles,
        axis.firstCandle);
      this.dots = [false, true].map((isBuy) => {
        const dots = this.chart.addSeries(charts.LineSeries, {
          lineVisible: false, pointMarkersVisible: true, pointMarkersRadius: 2,
          crosshairMarkerVisible: false, lastValueVisible: false, priceLineVisible: false,
        }, 0);
        dots.setData(this.marks.dots(axis, isBuy));
        return dots;
      });
      this.markers = charts.createSeriesMarkers(this.candles, [], { autoScale: false });
      this.highlight = charts.createSeriesMarkers(this.candles, [], { autoScale: false });
    }
    this.priceLegend = this.addLegend(0);
  }

  addEquity() {
    const { axis } = this;
    const curve = onAxis(axis, this.trading.equity, this.trading.startBalance > 0);
    this.curve = curve;
    const pane = this.series ? 1 : 0;
    const points = (values) => axis.chart.map((time, i) =>
      (values[i] === null ? { time } : { time, value: values[i] }));
    this.equity = this.chart.addSeries(charts.BaselineSeries, {
      baseValue: { type: 'price', price: this.trading.startBalance }, lineWidth: 2,
      priceFormat: { type: 'custom', formatter: roundMoney, minMove: 0.01 },
      priceLineVisible: false,
    }, pane);
    this.equity.setData(points(curve.equity));
    const deepest = curve.drawdown.reduce((least, fall) => Math.min(least, fall ?? 0), 0);
    const digits = Math.min(4, decimalsFor(deepest * 100, 2));
    const step = 10 ** -(digits + 2);
    this.fallText = (share) => percent(share, digits);
    this.drawdown = this.chart.addSeries(charts.BaselineSeries, {
      baseValue: { type: 'price', price: 0 }, lineWidth: 1,
      // A scale has room above its highest value, but nothing lies above a peak.
      priceFormat: { type: 'custom', minMove: step,
        formatter: (value) => (value > step / 2 ? '' : this.fallText(value)) },
      priceLineVisible: false,
    }, pane + 1);
    this.drawdown.setData(points(curve.drawdown));
    for (const series of [this.equity, this.drawdown])
      series.priceScale().applyOptions({ scaleMargins: { top: 0.18, bottom: 0.08 } });
    this.drawdown.priceScale().applyOptions({ scaleMargins: { top: 0.3, bottom: 0.08 } });
    this.equityLegend = this.addLegend(pane);
    this.drawdownLegend = this.addLegend(pane + 1);
  }

  recolor() {
    const up = theme.color('up');
    const down = theme.color('down');
    const faint = (color, share) => `color-mix(in srgb, ${color} ${share}%, transparent)`;
    const fade = (color, share) => solid(faint(color, share));
    const options = chartOptions(this.axis, this.width);
    delete options.timeScale.minBarSpacing;
    this.chart.applyOptions(options);
    if (this.candles) {
      this.candles.applyOptions({
        upColor: up, wickUpColor: up, borderUpColor: up,
        downColor: down, wickDownColor: down, borderDownColor: down,
      });
    }
    if (this.volume) {
      const { candles } = this.series;
      const colors = [fade(down, 35), fade(up, 35)];
      this.volume.setData(Array.from(candles.time, (_, i) => ({
        time: this.axis.chart[this.axis.firstCandle + i], value: candles.volume[i],
        color: colors[candles.close[i] >= candles.open[i] ? 1 : 0],
      })));
    }
    if (this.equity) {
      this.equity.applyOptions({
        topLineColor: up, topFillColor1: fade(up, 28), topFillColor2: fade(up, 4),
        bottomLineColor: down, bottomFillColor1: fade(down, 4), bottomFillColor2: fade(down, 28),
      });
      this.drawdown.applyOptions({
        topLineColor: down, topFillColor1: 'transparent', topFillColor2: 'transparent',
        bottomLineColor: down, bottomFillColor1: fade(down, 12), bottomFillColor2: fade(down, 34),
      });
    }
    this.drawMarks();
    this.showLegends();
  }

  placeLegends() {
    const panes = this.chart.panes();
    const top = this.host.getBoundingClientRect().top;
    for (const { pane, node } of this.legends) {
      const row = panes[pane] && panes[pane].getHTMLElement();
      if (!row) continue;
      // The separators between the panes can be dragged.
      if (!row.dataset.watched) {
        row.dataset.watched = '1';
        this.observer.observe(row);
      }
      node.style.top = `${row.getBoundingClientRect().top - top + 8}px`;
    }
  }

  /** What the legends say of the candle under the pointer, or of the last one in view. */
  showLegends(event = this.pointer) {
    this.pointer = event;
    const isOn = event && event.time !== undefined && event.logical !== undefined;
    const at = isOn ? Math.min(Math.max(0, event.logical), this.axis.utc.length - 1)
      : this.view()[1];
    if (this.candles) {
      const { firstCandle } = this.axis;
      const last = firstCandle + this.series.candles.time.length - 1;
      this.showPrices(isOn ? at : Math.min(Math.max(at, firstCandle), last));
    }
    if (!this.equity) return;
    const equity = this.curve.equity[at];
    const since = equity === null ? null : equity / this.trading.startBalance - 1;
    this.equityLegend.replaceChildren(el('b', {}, 'Equity'), el('span', {}, money(equity)),
      colored(signedPercent(since)));
    this.drawdownLegend.replaceChildren(el('b', {}, 'Drawdown'),
      colored(this.fallText(this.curve.drawdown[at])));
    const id = event && event.hoveredObjectId;
    this.host.classList.toggle('on-mark', id !== undefined && id !== null);
  }

  showPrices(at) {
    const { candles, code } = this.series;
    const i = at - this.axis.firstCandle;
    const value = (name, text, className) =>
      el('span', { class: className }, el('i', {}, name), text);
    const parts = [el('b', {}, code)];
    if (i >= 0 && i < candles.time.length) {
      const price = (column) => number(candles[column][i], this.digits);
      const change = candles.close[i] - candles.open[i];
      parts.push(value('O', price('open')), value('H', price('high')), value('L', price('low')),
        value('C', price('close'), tone(number(change, this.digits))));
      if (this.volume) parts.push(value('V', short(candles.volume[i])));
    }
    if (this.hidden) {
      parts.push(el('span', { class: 'muted hidden-marks' },
        `${plural(this.hidden, 'trade')} in view: zoom in for their marks`));
    }
    this.priceLegend.replaceChildren(...parts);
  }

  /** The candles in view as places on the axis, whole and within it. */
  view() {
    const range = this.chart.timeScale().getVisibleLogicalRange();
    const last = this.axis.utc.length - 1;
    if (!range) return [0, last];
    return [Math.min(last, Math.max(0, Math.ceil(range.from))),
      Math.max(0, Math.min(last, Math.floor(range.to)))];
  }

  onView() {
    if (this.isDue) return;
    this.isDue = true;
    requestAnimationFrame(() => {
      this.isDue = false;
      this.drawMarks();
      this.showLegends();
      const [from, to] = this.view();
      this.onRange(this.axis.utc[from], this.axis.utc[to], to - from + 1);
    });
  }

  drawMarks() {
    if (!this.markers) return;
    const spacing = this.chart.timeScale().options().barSpacing;
    const { style, marks, hidden } = this.showsTrades
      ? this.marks.inView(this.axis, ...this.view(), spacing)
      : { style: 'none', marks: [], hidden: 0 };
    if (hidden !== this.hidden) {
      this.hidden = hidden;
      this.showLegends();
    }
    this.dots.forEach((dots, isBuy) => dots.applyOptions({
      visible: style === 'dots', color: theme.color(isBuy ? 'buy' : 'sell'),
    }));
    const own = this.selected === null ? undefined : this.marks.groupOf.get(this.selected);
    this.markers.setMarkers(marks.filter((mark) => !own || mark.id !== String(own.trades[0])));
    this.highlight.setMarkers(own ? [this.marks.mark(this.axis, own,
      tradeTitle(this.trading.trades, this.selected, this.digits), 2)] : []);
  }

  showAll() {
    showWhole(this.chart, this.axis);
  }

  /** Shows what was played; what was there before as history is a step to the left. */
  showPlayed() {
    const { utc } = this.axis;
    const first = upperBound(utc, (run.from ? Date.parse(run.from) : 0) - 1);
    showWhole(this.chart, this.axis, first < utc.length - 1 ? first : 0);
  }

  /** Shows the last `ms` before the end of what is in view. */
  showSpan(ms) {
    const [, to] = this.view();
    const begin = this.axis.utc[to] - ms;
    const from = Math.max(0, upperBound(this.axis.utc, begin));
    const last = Math.max(to, from + 5);
    this.chart.timeScale().setVisibleLogicalRange({ from: from - 0.5, to: last + 0.5 });
  }

  setLogarithmic(isOn) {
    const { Normal, Logarithmic } = charts.PriceScaleMode;
    this.candles.priceScale().applyOptions({ mode: isOn ? Logarithmic : Normal });
  }

  setTradesShown(isOn) {
    this.showsTrades = isOn;
    this.drawMarks();
  }

  /** Brings a trade of this chart's code into view and points at it. */
  select(trade) {
    this.selected = trade;
    if (this.line) this.candles.removePriceLine(this.line);
    this.line = null;
    const group = trade === null || !this.marks ? undefined : this.marks.groupOf.get(trade);
    if (group) {
      const { candle } = group;
      const range = this.chart.timeScale().getVisibleLogicalRange();
      const span = Math.min(range ? range.to - range.from : 120, 160);
      const last = this.axis.utc.length - 1;
      // In the middle, but for trades so early or late that half of the chart would be empty.
      const from = Math.max(-1, Math.min(candle - span / 2, last + 1 - span));
      this.chart.timeScale().setVisibleLogicalRange({ from, to: from + span });
      const { trades } = this.trading;
      this.line = this.candles.createPriceLine({
        price: trades.price[trade], color: theme.color(trades.isBuy[trade] ? 'buy' : 'sell'),
        lineWidth: 1, lineStyle: charts.LineStyle.Dashed, axisLabelVisible: true, title: '',
      });
    }
    this.drawMarks();
  }
}

/** A colour that canvases of all ages understand: CSS works it out. */
function solid(color) {
  const probe = el('span', { style: `color: ${color}` });
  document.body.append(probe);
  const text = getComputedStyle(probe).color;
  probe.remove();
  const parts = /color\(srgb ([\d.e-]+) ([\d.e-]+) ([\d.e-]+)(?: \/ ([\d.e-]+))?\)/.exec(text);
  if (!parts) return text;
  const [red, green, blue] = parts.slice(1, 4).map((part) => Math.round(Number(part) * 255));
  return `rgba(${red}, ${green}, ${blue}, ${parts[4] || 1})`;
}
