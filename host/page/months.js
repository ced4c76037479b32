// Returns month by month, a year a row.

/** Years with their twelve returns; `null` for months before the first and after the last. */
function yearsOf(months) {
  if (months.length === 0) return [];
  const byMonth = new Map(months.map(([year, month, value]) => [year * 12 + month - 1, value]));
  const first = months[0][0] * 12 + months[0][1] - 1;
  const last = months[months.length - 1][0] * 12 + months[months.length - 1][1] - 1;
  const years = [];
  for (let year = months[0][0]; year <= months[months.length - 1][0]; ++year) {
    const values = MONTHS.map((_, at) => {
      const month = year * 12 + at;
      // Nothing was held in a month without a point of the curve.
      return month < first || month > last ? null : byMonth.get(month) ?? 0;
    });
    const total = values.reduce((product, value) => product * (1 + (value || 0)), 1) - 1;
    years.push({ year, values, total: Math.abs(total) < 1e-12 ? 0 : total });
  }
  return years;
}

const LEAST_PERCENT = 0.001;

/** A return in percent, with so many decimals or, to be told from none, up to three. */
function monthText(value, decimals) {
  const size = Math.abs(value) * 100;
  if (size === 0) return '0';
  if (size < LEAST_PERCENT) return '≈0';
  if (size >= 99.95) return signed(number(value * 100), value);
  const digits = Math.max(decimals, size >= 0.05 ? 1 : size >= 0.005 ? 2 : 3);
  return signed(number(value * 100, digits), value);
}

/** A cell whose colour is the stronger the nearer its value is to `strongest`. */
function heatCell(value, strongest, decimals, title) {
  if (value === null) return el('td', { class: 'none' });
  const share = strongest > 0 ? Math.min(1, Math.abs(value) / strongest) : 0;
  const text = monthText(value, decimals);
  const className = tone(text);
  return el('td', {
    class: `heat ${className}`,
    title: `${title}: ${signedPercent(value, decimalsFor(value * 100, 3))}`,
    style: `--heat: ${className ? (8 + 52 * share).toFixed(1) : 0}%`,
  }, text);
}

function monthsCard(months) {
  const years = yearsOf(months);
  const sizes = months.map((month) => Math.abs(month[2])).sort((a, b) => a - b);
  // One wild month does not make all others pale.
  const strongest = sizes[Math.floor(0.95 * (sizes.length - 1))] || sizes[sizes.length - 1] || 0;
  const decimals = Math.min(3, decimalsFor(strongest * 100, 1));
  const mostOfYear = Math.max(0, ...years.map((year) => Math.abs(year.total)));
  return card('Monthly returns', el('span', { class: 'aside' }, 'in %'),
    scrollBox(el('table', { class: 'months' },
      el('thead', {}, el('tr', {}, el('th', { scope: 'col' }, 'Year'),
        ...MONTHS.map((month) => el('th', { scope: 'col' }, month)),
        el('th', { scope: 'col', class: 'total' }, 'Year'))),
      el('tbody', {}, ...years.map(({ year, values, total }) => el('tr', {},
        el('th', { scope: 'row' }, String(year)),
        ...values.map((value, at) => heatCell(value, strongest, decimals, `${MONTHS[at]} ${year}`)),
        heatCell(total, mostOfYear, decimals, String(year))))))));
}
