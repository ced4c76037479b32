// What a run was made of: parameters, data, what came and what was told.

/** A table whose rows are lists of cells: texts or nodes. `numbers` are the columns that align. */
function plainTable(heads, rows, numbers = []) {
  const isNumber = (at) => (numbers.includes(at) ? 'number' : null);
  return scrollBox(el('table', { class: 'plain' },
    el('thead', {}, el('tr', {}, ...heads.map((head, at) =>
      el('th', { scope: 'col', class: isNumber(at) }, head)))),
    el('tbody', {}, ...rows.map((row) => el('tr', {}, ...row.map((cell, at) =>
      el('td', { class: isNumber(at) }, cell)))))));
}

/** A value of JSON; a long one is folded. */
function jsonValue(value) {
  if (typeof value === 'string') return value;
  const text = JSON.stringify(value);
  if (text.length <= 40) return text;
  const what = Array.isArray(value) ? plural(value.length, 'item')
    : plural(Object.keys(value).length, 'key');
  return el('details', {}, el('summary', {}, what),
    el('pre', {}, JSON.stringify(value, null, 1)));
}

function paramsCard(entry) {
  const names = Object.keys(entry.params || {});
  if (names.length === 0) return null;
  return card('Parameters', null,
    pairs(names.map((name) => [name, jsonValue(entry.params[name])])));
}

function envCard(entry) {
  const names = Object.keys(entry.env || {});
  if (names.length === 0) return null;
  return card('Environment', el('span', { class: 'aside' }, 'last values told'),
    pairs(names.map((name) => [name, entry.env[name]])));
}

function eventsCard(entry) {
  const names = Object.keys(entry.events || {});
  if (names.length === 0) return null;
  return card('Call-backs', el('span', { class: 'aside' }, number(entry.eventCount)),
    pairs(names.map((name) => [el('code', {}, name), number(entry.events[name])])));
}

function receivedCard(entry) {
  const received = entry.received || [];
  if (received.length === 0) return null;
  const time = (record) => reportTime(record.begin || record.time);
  return card('Received', null, plainTable(['Code', 'Series', 'Records', 'First', 'Last'],
    received.map((one) => [one.code, one.kind === 'ticks' ? 'ticks' : `bars ${one.frequency}`,
      number(one.records), time(one.first), time(one.last)]), [2]));
}

function recordsCard(entry) {
  const records = entry.records || [];
  if (records.length === 0) return null;
  return card('Dictionaries', null, plainTable(
    ['Dictionary', 'Target', 'Records', 'Snapshots', 'Deletions'],
    records.map((one) => [one.dictionary, one.target, number(one.records),
      number(one.snapshots), number(one.deletions)]), [2, 3, 4]));
}

/** The name of a file, and where it is. */
function fileName(path) {
  const cut = path.lastIndexOf('/') + 1;
  const folder = path.slice(0, cut);
  const last = folder.lastIndexOf('/', cut - 2);
  return el('span', { class: 'file', title: path }, el('span', { class: 'muted' },
    folder.length > 24 ? `…${folder.slice(last)}` : folder), path.slice(cut));
}

function dataCard() {
  const rows = [];
  for (const series of run.data) {
    const kind = series.kind === 'ticks' ? 'ticks' : `bars ${series.frequency}`;
    const own = [series.code, kind, number(series.records), reportTime(series.begin),
      reportTime(series.end)];
    const hashes = series.hashes.length ? series.hashes
      : [{ file: series.files, bytes: null, xxh3: NONE }];
    hashes.forEach((hash, at) => rows.push([...(at === 0 ? own : own.map(() => '')),
      fileName(hash.file), hash.bytes === null ? NONE : bytes(hash.bytes),
      el('code', { class: 'hash' }, hash.xxh3)]));
  }
  const notes = [...new Set(run.data.flatMap((series) => series.notes))];
  return card('Data', el('span', { class: 'aside' }, 'hashes are XXH3-128 of the files'),
    plainTable(['Code', 'Series', 'Records', 'Begin', 'End', 'File', 'Size', 'Hash'], rows, [2, 6]),
    notes.length ? el('ul', { class: 'notes' }, ...notes.map((note) => el('li', {}, note))) : null);
}

function accountsCard() {
  if (run.accounts.length === 0) return null;
  return card('Accounts', null, plainTable(
    ['Account', 'Currency', 'Start', 'Equity', 'Return', 'Available', 'Margin', 'Fees'],
    run.accounts.map((account) => [account.name, account.currency || NONE,
      money(account.startBalance), money(account.final.equity),
      colored(signedPercent(account.figures.return)),
      money(account.final.available), money(account.final.margin), money(account.final.fee)]),
    [2, 3, 4, 5, 6, 7]));
}

/** What made the run fail, or was lost on its way. */
function notices(entry) {
  const bad = (...text) => el('p', { class: 'notice bad' }, ...text);
  const list = run.failures.map((failure) => bad(failure));
  if (run.outcome === 'interrupted')
    list.push(el('p', { class: 'notice' }, 'The run was interrupted before its data ended.'));
  if (!entry) return list;
  if (entry.message)
    list.push(el('p', { class: entry.status === 'Error' ? 'notice bad' : 'notice' },
      entry.message));
  if (entry.exceptions && entry.exceptions.count)
    list.push(bad(`${plural(entry.exceptions.count, 'exception')}, the first in `,
      entry.exceptions.first));
  const orders = entry.trading && entry.trading.orders;
  const rejected = orders ? orders.byStatus.rejected || 0 : 0;
  if (rejected) {
    list.push(el('p', { class: 'notice' }, `${number(rejected)} of ` +
      `${plural(orders.count, 'order')} rejected, the first: ${orders.firstRejection || NONE}`));
  }
  return list;
}

function fillFoot() {
  const { timing } = run;
  const parts = [`orvane ${run.version}`, `times in ${run.timeZone}`,
    `${number(timing.eventsPerSecond)} call-backs a second, ${number(timing.elapsedSeconds, 2)} s`];
  document.getElementById('foot').append(
    el('p', {}, parts.join(' · ')),
    el('p', {}, 'Charts: TradingView Lightweight Charts™, Copyright © TradingView, Inc., ' +
      'Apache License 2.0, https://www.tradingview.com/'));
}
