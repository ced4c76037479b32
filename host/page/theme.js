// Light and dark, and which colour a rise has: a matter of where one trades.

const stored = {
  get(key, otherwise) {
    try {
      return localStorage.getItem(`orvane.${key}`) || otherwise;
    } catch {
      return otherwise;  // A browser may refuse pages that come from a file.
    }
  },
  set(key, value) {
    try {
      localStorage.setItem(`orvane.${key}`, value);
    } catch {
      // It then holds for this page alone.
    }
  },
};

const theme = {
  listeners: new Set(),
  system: matchMedia('(prefers-color-scheme: dark)'),
  choice: stored.get('theme', 'system'),
  rise: stored.get('rise', 'green'),

  apply() {
    const isDark = this.choice === 'dark' || (this.choice === 'system' && this.system.matches);
    document.documentElement.dataset.theme = isDark ? 'dark' : 'light';
    document.documentElement.dataset.rise = this.rise;
    for (const listener of this.listeners) listener();
  },

  /** The colours of the page, for the charts. */
  color(name) {
    return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
  },

  controls() {
    return [
      segmented('Colour of a rise',
        [['green', '▲', 'Rises are green'], ['red', '▲', 'Rises are red']], this.rise,
        (value) => {
          this.rise = value;
          stored.set('rise', value);
          this.apply();
        }),
      segmented('Colours of the page',
        [['system', 'Auto', 'As the system has it'], ['light', 'Light'], ['dark', 'Dark']],
        this.choice, (value) => {
          this.choice = value;
          stored.set('theme', value);
          this.apply();
        }),
    ];
  },
};

theme.system.addEventListener('change', () => theme.apply());
theme.apply();
