// A browser without a window, driven over the pipe that it offers for that: no package is needed.

import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { existsSync, mkdirSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';

const SKIPPED = 77;

/** The browser's program; undefined where there is none. */
function findBrowser() {
  const named = process.env.ORVANE_BROWSER;
  const names = named ? [named] : ['chromium', 'chromium-browser', 'google-chrome'];
  const folders = ['', ...(process.env.PATH || '').split(':')];
  for (const name of names)
    for (const folder of folders)
      if (existsSync(path.join(folder, name)) && path.isAbsolute(path.join(folder, name)))
        return path.join(folder, name);
  return undefined;
}

/** A running browser. Commands and events are those of the DevTools protocol. */
export class Browser {
  constructor(program) {
    this.folder = mkdtempSync(path.join(tmpdir(), 'orvane-page-'));
    // Nothing may be asked of any other machine: what a page tries to load fails.
    this.process = spawn(program, ['--headless', '--no-sandbox', '--disable-gpu',
      '--disable-dev-shm-usage', '--disable-extensions', '--disable-background-networking',
      '--disable-component-update', '--disable-sync', '--no-first-run', '--mute-audio',
      '--hide-scrollbars', '--force-color-profile=srgb', '--lang=en-US',
      '--host-resolver-rules=MAP * ~NOTFOUND', '--remote-debugging-pipe',
      `--user-data-dir=${this.folder}`, 'about:blank'],
    { stdio: ['ignore', 'ignore', 'pipe', 'pipe', 'pipe'] });
    this.said = '';
    this.process.stderr.on('data', (text) => { this.said += text; });
    this.calls = new Map();
    this.listeners = new Set();
    this.lastId = 0;
    const parts = [];
    this.process.stdio[4].on('data', (data) => {
      let begin = 0;
      for (let end = data.indexOf(0); end >= 0; end = data.indexOf(0, begin)) {
        parts.push(data.subarray(begin, end));
        this.receive(JSON.parse(Buffer.concat(parts.splice(0)).toString()));
        begin = end + 1;
      }
      parts.push(data.subarray(begin));
    });
    this.ended = new Promise((resolve) => { this.process.on('exit', resolve); });
    this.ended.then(() => {
      for (const { reject } of this.calls.values())
        reject(new Error(`the browser ended: ${this.said.slice(-2000)}`));
    });
  }

  receive(message) {
    if (message.id === undefined) {
      for (const listener of this.listeners) listener(message);
      return;
    }
    const { resolve, reject, method } = this.calls.get(message.id);
    this.calls.delete(message.id);
    if (message.error) reject(new Error(`${method}: ${message.error.message}`));
    else resolve(message.result);
  }

  call(method, params = {}, sessionId = undefined) {
    const id = ++this.lastId;
    return new Promise((resolve, reject) => {
      this.calls.set(id, { resolve, reject, method });
      this.process.stdio[3].write(`${JSON.stringify({ id, method, params, sessionId })}\0`);
    });
  }

  /** A page of its own, of the given size. */
  async open(url, { width = 1400, height = 1000, scheme = 'light' } = {}) {
    const { targetId } = await this.call('Target.createTarget', { url: 'about:blank' });
    const { sessionId } = await this.call('Target.attachToTarget', { targetId, flatten: true });
    const page = new Page(this, sessionId, targetId);
    await page.start(width, height, scheme);
    await page.load(url);
    return page;
  }

  async close() {
    this.call('Browser.close').catch(() => {});
    await this.ended;
    rmSync(this.folder, { recursive: true, force: true, maxRetries: 5 });
  }
}

/** One page. What it complains of and what it asks for is kept. */
export class Page {
  constructor(browser, sessionId, targetId) {
    this.browser = browser;
    this.sessionId = sessionId;
    this.targetId = targetId;
    this.errors = [];
    this.requests = [];
    this.onEvent = (message) => {
      if (message.sessionId === sessionId) this.take(message);
    };
    browser.listeners.add(this.onEvent);
  }

  take({ method, params }) {
    if (method === 'Runtime.exceptionThrown') {
      const { exceptionDetails } = params;
      this.errors.push(exceptionDetails.exception?.description || exceptionDetails.text);
    } else if (method === 'Runtime.consoleAPICalled' &&
        ['error', 'warning'].includes(params.type)) {
      this.errors.push(params.args.map((arg) => arg.value ?? arg.description).join(' '));
    } else if (method === 'Log.entryAdded' && params.entry.level === 'error') {
      this.errors.push(params.entry.text);
    } else if (method === 'Network.requestWillBeSent') {
      this.requests.push(params.request.url);
    } else if (method === 'Page.loadEventFired' && this.whenLoaded) {
      this.whenLoaded();
    }
  }

  call(method, params) {
    return this.browser.call(method, params, this.sessionId);
  }

  async start(width, height, scheme) {
    for (const domain of ['Page', 'Runtime', 'Log', 'Network']) await this.call(`${domain}.enable`);
    await this.call('Emulation.setDeviceMetricsOverride',
      { width, height, deviceScaleFactor: 1, mobile: false });
    await this.setScheme(scheme);
  }

  setScheme(scheme) {
    return this.call('Emulation.setEmulatedMedia',
      { features: [{ name: 'prefers-color-scheme', value: scheme }] });
  }

  async load(url) {
    const loaded = new Promise((resolve) => { this.whenLoaded = resolve; });
    await this.call('Page.navigate', { url });
    await loaded;
    await this.frames();
  }

  /** The value of an expression in the page; promises are waited for. */
  async value(expression) {
    const { result, exceptionDetails } = await this.call('Runtime.evaluate',
      { expression, awaitPromise: true, returnByValue: true });
    if (exceptionDetails) {
      throw new Error(`${expression}: ` +
        `${exceptionDetails.exception?.description || exceptionDetails.text}`);
    }
    return result.value;
  }

  /** Lets the page draw what is due. */
  frames(count = 3) {
    return this.value(`new Promise((resolve) => {
      let left = ${count};
      const next = () => (left-- > 0 ? requestAnimationFrame(next) : resolve());
      next();
    })`);
  }

  /** The middle of the element, in view. */
  async place(selector) {
    const place = await this.value(`(() => {
      const node = document.querySelector(${JSON.stringify(selector)});
      if (!node) return null;
      const seen = node.getBoundingClientRect();
      if (seen.top < 0 || seen.bottom > innerHeight) node.scrollIntoView({block: 'center'});
      const box = node.getBoundingClientRect();
      return {x: box.x + box.width / 2, y: box.y + box.height / 2};
    })()`);
    if (!place) throw new Error(`there is no ${selector}`);
    return place;
  }

  mouse(type, { x, y }, more = {}) {
    return this.call('Input.dispatchMouseEvent', { type, x, y, ...more });
  }

  async click(selector) {
    const at = await this.place(selector);
    await this.mouse('mouseMoved', at);
    await this.mouse('mousePressed', at, { button: 'left', clickCount: 1 });
    await this.mouse('mouseReleased', at, { button: 'left', clickCount: 1 });
    await this.frames();
  }

  async drag(selector, byX) {
    const at = await this.place(selector);
    await this.mouse('mouseMoved', at);
    await this.mouse('mousePressed', at, { button: 'left', buttons: 1, clickCount: 1 });
    for (let step = 1; step <= 8; ++step)
      await this.mouse('mouseMoved', { x: at.x + byX * step / 8, y: at.y },
        { button: 'left', buttons: 1 });
    const to = { x: at.x + byX, y: at.y };
    await this.mouse('mouseReleased', to, { button: 'left', clickCount: 1 });
    await this.frames();
  }

  async wheel(selector, deltaY) {
    const at = await this.place(selector);
    await this.mouse('mouseMoved', at);
    await this.mouse('mouseWheel', at, { deltaX: 0, deltaY });
    await this.frames();
  }

  /** Types into a field as a person does. */
  async type(selector, text) {
    await this.click(selector);
    await this.call('Input.insertText', { text });
    await this.frames();
  }

  /** The picture of the page as PNG; with `isWhole`, also what lies below the window. */
  async picture(isWhole = false) {
    const { data } = await this.call('Page.captureScreenshot',
      { format: 'png', captureBeyondViewport: isWhole });
    return Buffer.from(data, 'base64');
  }

  async close() {
    this.browser.listeners.delete(this.onEvent);
    await this.browser.call('Target.closeTarget', { targetId: this.targetId });
  }
}

/** An empty folder for what a test writes, and a browser; without one the test is skipped. */
export function prepared(folder) {
  const found = findBrowser();
  if (!found) {
    console.log('SKIPPED: there is no chromium here; scripts/deps installs it');
    process.exit(SKIPPED);
  }
  rmSync(folder, { recursive: true, force: true });
  mkdirSync(folder, { recursive: true });
  return new Browser(found);
}

/** Fails where the page complained or asked for anything but itself. */
export function expectClean(page, url) {
  assert.deepEqual(page.errors, [], 'the page complained');
  // A browser may load a page's address twice, but nothing else.
  assert.deepEqual(page.requests.filter((asked) => asked.split('#')[0] !== url), []);
}

/** What the page's script of `expectReadable` answers: the worst contrast of each kind of text. */
function faintTexts() {
  const canvas = document.createElement('canvas').getContext('2d', { willReadFrequently: true });
  const partsOf = (color) => {
    canvas.clearRect(0, 0, 1, 1);
    canvas.fillStyle = color;
    canvas.fillRect(0, 0, 1, 1);
    return Array.from(canvas.getImageData(0, 0, 1, 1).data);
  };
  const over = (top, below) => top.slice(0, 3).map((part, at) =>
    (part * top[3] + below[at] * (255 - top[3])) / 255);
  const behind = (node) => (node
    ? over(partsOf(getComputedStyle(node).backgroundColor), behind(node.parentElement))
    : [255, 255, 255]);
  const shade = (color) => color.map((part) => part / 255)
    .map((part) => (part <= 0.03928 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4))
    .reduce((sum, part, at) => sum + part * [0.2126, 0.7152, 0.0722][at], 0);
  const faint = {};
  const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (texts.nextNode()) {
    const node = texts.currentNode.parentElement;
    const isSeen = texts.currentNode.textContent.trim() && node.checkVisibility() &&
      !['SCRIPT', 'STYLE', 'NOSCRIPT'].includes(node.tagName);
    if (!isSeen) continue;
    const back = behind(node);
    const front = over(partsOf(getComputedStyle(node).color), back);
    const [low, high] = [shade(front), shade(back)].sort((one, other) => one - other);
    const contrast = (high + 0.05) / (low + 0.05);
    const kind = `${node.parentElement.className} ${node.tagName}.${node.className}`;
    if (contrast < 4.5) faint[kind] = Math.min(faint[kind] ?? 99, Number(contrast.toFixed(2)));
  }
  return faint;
}

/** Fails where a text stands out less than 4.5 to 1 (WCAG 2, AA), or the page is cut off. */
export async function expectReadable(page) {
  assert.deepEqual(await page.value(`(${faintTexts})()`), {}, 'texts are too faint');
  const [needed, given] = await page.value('[document.documentElement.scrollWidth, innerWidth]');
  assert.ok(needed <= given, `the page takes ${needed} of ${given} pixels`);
}

/** Runs the tests, or the one that is named, and ends the process with how they went. */
export async function runTests(browser, tests, only = undefined) {
  const chosen = Object.entries(tests).filter(([name]) => !only || name === only);
  let failures = 0;
  for (const [name, test] of chosen) {
    try {
      await test();
      console.log(`ok      ${name}`);
    } catch (error) {
      ++failures;
      console.log(`FAILED  ${name}: ${error.stack}`);
    }
  }
  await browser.close();
  if (chosen.length === 0) console.log(`FAILED: there is no test ${only}`);
  process.exit(failures === 0 && chosen.length > 0 ? 0 : 1);
}
