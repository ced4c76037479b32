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
    years.push({ year, values, total });
  }
  return years;
}

/** A cell whose colour is the stronger the nearer its value is to `strongest`. */
function heatCell(value, strongest, title) {
  if (value === null) return el('td', { class: 'none' });
  const share = strongest > 0 ? Math.min(1, Math.abs(value) / strongest) : 0;
  const digits = Math.abs(value) >= 0.9995 ? 0 : 1;
  const text = signed(number(value * 100, digits), value);
  const className = tone(text);
  return el('td', {
    class: `heat ${className}`, title: `${title}: ${signedPercent(value, 3)}`,
    style: `--heat: ${className ? (8 + 52 * share).toFixed(1) : 0}%`,
  }, text);
}

function monthsCard(months) {
  const years = yearsOf(months);
  const sizes = months.map((month) => Math.abs(month[2])).sort((a, b) => a - b);
  // One wild month does not make all others pale.
  const strongest = sizes[Math.floor(0.95 * (sizes.length - 1))] || sizes[sizes.length - 1] || 0;
  const mostOfYear = Math.max(0, ...years.map((year) => Math.abs(year.total)));
  return card('Monthly returns', el('span', { class: 'aside' }, 'in %'),
    el('div', { class: 'scroll-x' }, el('table', { class: 'months' },
      el('thead', {}, el('tr', {}, el('th', { scope: 'col' }, 'Year'),
        ...MONTHS.map((month) => el('th', { scope: 'col' }, month)),
        el('th', { scope: 'col', class: 'total' }, 'Year'))),
      el('tbody', {}, ...years.map(({ year, values, total }) => el('tr', {},
        el('th', { scope: 'row' }, String(year)),
        ...values.map((value, at) => heatCell(value, strongest, `${MONTHS[at]} ${year}`)),
        heatCell(total, mostOfYear, String(year))))))));
}
