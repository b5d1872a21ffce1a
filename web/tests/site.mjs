// What the tests share: the page in Chromium, and what the native tool makes of the same frames.
import { execFileSync } from 'node:child_process';
import { mkdirSync, readFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { extname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { chromium } from 'playwright-core';

const project = fileURLToPath(new URL('../..', import.meta.url));
const site = join(project, 'build/web/site');
export const work = join(project, 'build/web');
export const scene = join(work, 'scene.y4m');
const sceneFrames = 60;
const patience = 60000; // milliseconds, on a machine that has much else to do

const types = { '.html': 'text/html', '.css': 'text/css', '.wasm': 'application/wasm' };

function serve(request, response) {
  const name = request.url === '/' ? 'index.html' : request.url.slice(1);
  try {
    const body = readFileSync(join(site, name));
    response.writeHead(200, { 'content-type': types[extname(name)] ?? 'text/javascript' }).end(body);
  } catch {
    response.writeHead(404).end();
  }
}

export const tool = (...args) => execFileSync(join(project, 'build/vidproc'), [...args, '--quiet']);

/// MD5 of every frame that the native library makes of the scene.
export function nativeSums(...args) {
  tool('pre', scene, ...args, '--output-csp', 'i420', '-o', '/dev/null', '--framemd5', join(work, 'sums'));
  const lines = readFileSync(join(work, 'sums'), 'latin1').split('\n');
  return lines.filter((line) => /^0,/.test(line)).map((line) => line.split(',').at(-1).trim());
}

/// {open(options), close()}: `open` gives a page that plays the rendered clip; `script` runs before the page's own.
export async function startBrowser() {
  mkdirSync(work, { recursive: true });
  const camera = ['--synthetic', '--frames', `${sceneFrames}`, '--preset', 'none', '--output-csp', 'i420'];
  tool('pre', ...camera, '-o', scene);
  const server = createServer(serve).listen(0);
  const args = ['--use-fake-device-for-media-stream', '--use-fake-ui-for-media-stream'];
  const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: [...args, `--use-file-for-fake-video-capture=${scene}`],
  });
  return {
    async open({ script = () => {}, ...options } = {}) {
      const page = await browser.newPage({ viewport: { width: 1280, height: 800 }, ...options });
      page.setDefaultTimeout(patience);
      await page.addInitScript(script);
      await page.goto(`http://localhost:${server.address().port}/`);
      return page;
    },
    async close() {
      await browser.close();
      server.close();
    },
  };
}

/// The figures that are shown, once `accept` takes them.
export async function figures(page, accept = () => true) {
  const begin = Date.now();
  for (;;) {
    await page.waitForSelector('#figures dt');
    const shown = await page.evaluate(() => {
      const terms = [...document.querySelectorAll('#figures dt')];
      return Object.fromEntries(terms.map((term) => [term.textContent, term.nextSibling.textContent]));
    });
    if (accept(shown)) return shown;
    if (Date.now() - begin > patience) throw new Error(`No such figures came: ${JSON.stringify(shown)}`);
    await page.waitForTimeout(200);
  }
}

/// As in a browser whose workers lack something.
export async function reloadWithout(page, name) {
  const worker = readFileSync(join(site, 'worker.js'), 'utf8');
  const contentType = 'text/javascript';
  await page.route('**/worker.js', (route) => route.fulfill({ contentType, body: `delete self.${name};${worker}` }));
  await page.reload();
}

/// Lets the page open something, after it has shown figures of something else, and returns its figures.
export async function opens(page, open) {
  const cleared = page.evaluate(
    () =>
      new Promise((resolve) => {
        const list = document.getElementById('figures');
        new MutationObserver(() => list.childElementCount || resolve()).observe(list, { childList: true });
      }),
  );
  await open();
  await cleared;
  return figures(page);
}

export async function error(page) {
  await page.waitForFunction(() => document.getElementById('error').textContent);
  return page.textContent('#error');
}

/// Green of the picture as it is on the screen: {width, height, at(x, y)}.
export async function pixels(page) {
  const png = await page.locator('#stage').screenshot();
  const { width, height, green } = await page.evaluate(async (base64) => {
    const bitmap = await createImageBitmap(await (await fetch(`data:image/png;base64,${base64}`)).blob());
    const { width, height } = bitmap;
    const context = new OffscreenCanvas(width, height).getContext('2d');
    context.drawImage(bitmap, 0, 0);
    const { data } = context.getImageData(0, 0, width, height);
    let text = '';
    for (let i = 1; i < data.length; i += 4) text += String.fromCharCode(data[i]);
    return { width, height, green: btoa(text) };
  }, png.toString('base64'));
  const bytes = Buffer.from(green, 'base64');
  return { width, height, at: (x, y) => bytes[y * width + x] };
}
