// Elements without a framework.

/**
 * Makes an element. Attributes that are functions are listeners; `class` and other attributes are
 * set as they are; null and false ones are left out. Children are texts or nodes, null for none.
 */
function el(tag, attributes = {}, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === undefined || value === false) continue;
    if (typeof value === 'function') node.addEventListener(name, value);
    else node.setAttribute(name, value === true ? '' : value);
  }
  node.append(...children.flat().filter((child) => child !== null && child !== undefined));
  return node;
}

/** A framed part of the page. `aside` stands at the right of its title. */
function card(title, aside, ...content) {
  return el('section', { class: 'card' },
    el('header', { class: 'card-head' }, el('h2', {}, title), aside), ...content);
}

/** One figure with its name above and what explains it below. */
function tile(label, value, below, { className = '', hint = null } = {}) {
  return el('div', { class: 'tile', title: hint },
    el('div', { class: 'tile-label' }, label),
    el('div', { class: `tile-value ${className}`.trim() }, value),
    el('div', { class: 'tile-below' }, below || '\u00a0'));
}

const MOST_TILES_OF_A_ROW = 6;

/** Tiles in rows of one length: all in one, in two halves, or in pairs, as there is room. */
function tileRows(tiles) {
  return el('div', {
    class: tiles.length > MOST_TILES_OF_A_ROW ? 'tiles many' : 'tiles',
    style: `--all: ${tiles.length}; --half: ${Math.ceil(tiles.length / 2)}`,
  }, ...tiles);
}

/** Fades the right edge of a box for as long as there is more beyond it; answers its observer. */
function fadeWhereCut(box) {
  const look = () => box.classList.toggle('cut',
    box.scrollLeft + box.clientWidth < box.scrollWidth - 1);
  box.addEventListener('scroll', look, { passive: true });
  const observer = new ResizeObserver(look);
  for (const node of [box, ...box.children]) observer.observe(node);
  return observer;
}

/** A box that scrolls sideways where its content is wider than the page. */
function scrollBox(content, className = '') {
  const box = el('div', { class: `scroll-x ${className}`.trim() }, content);
  fadeWhereCut(box);
  return box;
}

/** A row of buttons of which one is on. `choices` are pairs of value and text. */
function segmented(label, choices, current, onChoose) {
  const group = el('div', { class: 'segmented', role: 'group', 'aria-label': label });
  for (const [value, text, title] of choices) {
    group.append(el('button', {
      type: 'button', title, 'data-value': value, 'aria-pressed': String(value === current),
      click: () => {
        for (const other of group.children)
          other.setAttribute('aria-pressed', String(other.dataset.value === value));
        onChoose(value);
      },
    }, text));
  }
  return group;
}

/** A button that is on or off. */
function toggle(text, isOn, onChange, title) {
  const button = el('button', {
    type: 'button', class: 'toggle', title, 'aria-pressed': String(isOn),
    click: () => {
      const now = button.getAttribute('aria-pressed') !== 'true';
      button.setAttribute('aria-pressed', String(now));
      onChange(now);
    },
  }, text);
  return button;
}

/** A list to choose from. `choices` are pairs of value and text. */
function chooser(label, choices, current, onChoose) {
  const select = el('select', { 'aria-label': label, change: () => onChoose(select.value) });
  for (const [value, text] of choices)
    select.append(el('option', { value, selected: value === current }, text));
  return select;
}
