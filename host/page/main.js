// Which page is shown: the address after "#" tells, so that each has a link and a way back.

const MOST_TABS = 7;
let shown = null;

function pageLink(entry) {
  return entry ? `#${encodeURIComponent(entry.name)}` : '#';
}

/** The entry that the address names; undefined: the overview. */
function entryOfAddress() {
  if (run.entries.length === 1) return run.entries[0];
  let name = '';
  try {
    name = decodeURIComponent(location.hash.slice(1));
  } catch {
    // An address that nobody made here: the overview.
  }
  return run.entries.find((entry) => entry.name === name);
}

function fillNav(current) {
  const nav = document.getElementById('nav');
  if (run.entries.length === 1) return;
  const tab = (entry, text) => el('a', {
    href: pageLink(entry), 'aria-current': entry === current ? 'page' : null,
  }, text);
  const tabs = [tab(undefined, 'Overview')];
  if (run.entries.length <= MOST_TABS) {
    tabs.push(...run.entries.map((entry) => tab(entry, entry.name)));
  } else {
    tabs.push(chooser('Runner', [['', 'Choose a runner …'],
      ...run.entries.map((entry, at) => [String(at), entry.name])],
    current ? String(run.entries.indexOf(current)) : '',
    (at) => { location.hash = pageLink(at === '' ? undefined : run.entries[Number(at)]); }));
  }
  nav.replaceChildren(...tabs);
}

function showPage() {
  const entry = entryOfAddress();
  if (shown) shown.destroy();
  fillNav(entry);
  shown = entry ? new RunnerPage(entry) : new OverviewPage();
  document.getElementById('main').replaceChildren(shown.node);
  document.title = `${entry ? entry.name : 'Overview'} – run report`;
  shown.start();
  window.scrollTo(0, 0);
}

document.getElementById('tools').append(...theme.controls());
fillFoot();
window.addEventListener('hashchange', showPage);
showPage();
