// The page in Chromium: frames, border, sources, errors. scripts/web --test runs it.
import assert from 'node:assert/strict';
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { error, figures, nativeSums, opens, pixels, reloadWithout, scene, startBrowser, tool, work } from './site.mjs';

let browser;
before(async () => (browser = await startBrowser()));
after(() => browser?.close());

const press = (page, name) => page.getByRole('button', { name }).click();
const openFile = (page, path) => opens(page, () => page.setInputFiles('#file', path));

/// As somebody drops it onto the picture.
async function drop(page, path) {
  const content = readFileSync(path).toString('base64');
  await page.evaluate(
    async ([base64, name]) => {
      const data = new DataTransfer();
      data.items.add(new File([Uint8Array.from(atob(base64), (c) => c.charCodeAt(0))], name));
      document.getElementById('stage').dispatchEvent(new DragEvent('drop', { dataTransfer: data, bubbles: true }));
    },
    [content, path.split('/').at(-1)],
  );
}

async function set(page, settings) {
  await page.locator('details').evaluate((details) => (details.open = true));
  for (const [id, value] of Object.entries(settings)) {
    const control = page.locator(`#${id}`);
    if ((await control.evaluate(({ tagName }) => tagName)) === 'SELECT') await control.selectOption(value);
    else await control.fill(value);
    await control.blur();
  }
}

/// The frame that is shown, as the page saves it.
async function savedFrame(page) {
  const download = page.waitForEvent('download');
  await press(page, 'Save frame');
  const file = await download;
  const bytes = readFileSync(await file.path());
  return { number: Number(file.suggestedFilename().match(/\d+/)), frame: bytes.subarray(bytes.indexOf('FRAME\n') + 6) };
}

test('frames are those of the native library', async (t) => {
  const page = await browser.open();
  await figures(page);
  const half = ['--size', '640x360'];
  const plain = { preset: 'none', scale: '0.5', filter: '4', sharpening: '5', temporal_strength: '90' };
  const cases = [
    ['a preset', { preset: 'webcam' }, []],
    ['a preset, half the size', { preset: 'low-light', scale: '0.5' }, ['--preset', 'low-light', ...half]],
    [
      'single settings',
      plain,
      ['--preset', 'none', ...half, '--filter', 'lanczos', '--sharpen', '5', '--temporal', '90'],
    ],
  ];
  for (const [name, settings, options] of cases) {
    await t.test(name, async () => {
      const sums = nativeSums(...options);
      await set(page, settings);
      await openFile(page, scene);
      await press(page, 'Pause');
      const { number, frame } = await savedFrame(page);
      assert.equal(createHash('md5').update(frame).digest('hex'), sums[number], `frame ${number}`);
    });
  }
  await page.close();
});

test('the border moves across the picture', async (t) => {
  const page = await browser.open();
  await figures(page);
  await openFile(page, scene);
  await press(page, 'Pause');
  const border = page.getByRole('slider', { name: 'Border of before and after' });
  await border.focus();
  await page.keyboard.press('End');
  const beforeAlone = await pixels(page);
  await page.keyboard.press('Home');
  const afterAlone = await pixels(page);

  /// Mean difference in the area between two columns, below what says before and after.
  const difference = (one, other, left, right) => {
    let sum = 0;
    let count = 0;
    for (let y = 100; y < one.height - 10; y += 3) {
      for (let x = left; x < right; x += 3, ++count) sum += Math.abs(one.at(x, y) - other.at(x, y));
    }
    return sum / count;
  };

  await t.test('noise is gone on one side', () => {
    assert.ok(difference(beforeAlone, afterAlone, 10, beforeAlone.width - 10) > 1);
  });
  const moves = [
    ['by keys', async () => page.keyboard.press('PageUp').then(() => page.keyboard.press('PageUp'))],
    [
      'by a drag',
      async () => {
        const box = await page.locator('#stage').boundingBox();
        const [y, from] = [box.y + box.height / 2, Number(await border.inputValue())];
        await page.mouse.move(box.x + (box.width * from) / 100, y);
        await page.mouse.down();
        await page.mouse.move(box.x + box.width * 0.7, y, { steps: 4 });
        await page.mouse.up();
      },
    ],
  ];
  for (const [name, move] of moves) {
    await t.test(name, async () => {
      await move();
      const share = Number(await border.inputValue()) / 100;
      assert.ok(share > 0.1 && share < 0.9, `${share}`);
      const both = await pixels(page);
      const middle = Math.round(share * both.width);
      assert.equal(difference(both, beforeAlone, 10, middle - 6), 0);
      assert.equal(difference(both, afterAlone, middle + 6, both.width - 10), 0);
    });
  }
  await t.test('what is drawn is what was made', async () => {
    const { frame } = await savedFrame(page);
    const drawn = await page.evaluate(() => {
      const context = new OffscreenCanvas(1280, 720).getContext('2d');
      context.drawImage(document.getElementById('after'), 0, 0);
      const { data } = context.getImageData(0, 0, 1280, 720);
      return Array.from({ length: 720 }, (_, y) =>
        Array.from(data.subarray(4 * (1280 * y + 640), 4 * (1280 * y + 641))),
      );
    });
    const luma = drawn.map(([r, g, b]) => 16 + 0.1826 * r + 0.6142 * g + 0.062 * b);
    const mean = luma.reduce((sum, value, y) => sum + Math.abs(value - frame[1280 * y + 640]), 0) / 720;
    assert.ok(mean < 1, `luma differs by ${mean}`);
  });
  await page.close();
});

/// In place of the browser's camera: frames of red, green, blue and alpha.
function redCamera() {
  navigator.mediaDevices.getUserMedia = async () => {
    const generator = new MediaStreamTrackGenerator({ kind: 'video' });
    const writer = generator.writable.getWriter();
    const data = new Uint32Array(1280 * 720).fill(0xff0000ff);
    const shape = { format: 'RGBA', codedWidth: 1280, codedHeight: 720 };
    setInterval(() => writer.write(new VideoFrame(data, { ...shape, timestamp: 1000 * performance.now() })), 33);
    return new MediaStream([generator]);
  };
}

test('sources', async (t) => {
  const video = join(work, 'scene.mp4');
  tool('pre', scene, '--preset', 'none', '-o', video);
  const camera = (page) => press(page, 'Camera');
  const cases = [
    ['camera', camera],
    ['camera without MediaStreamTrackProcessor', camera, () => delete window.MediaStreamTrackProcessor],
    ['dropped video', (page) => drop(page, video)],
    ['rendered clip', (page) => press(page, 'Rendered clip')],
    ['camera of RGB', camera, redCamera, 'RGBA', 63],
  ];
  for (const [name, open, script, format = 'I420', luma = null] of cases) {
    await t.test(name, async () => {
      const page = await browser.open({ script });
      await figures(page);
      const shown = await opens(page, () => open(page));
      assert.equal(shown.Before, `1280 x 720, ${format}`);
      assert.equal(await page.textContent('#error'), '');
      if (luma) assert.equal((await savedFrame(page)).frame[0], luma);
      await page.close();
    });
  }
});

test('figures of a camera', async (t) => {
  const page = await browser.open();
  await figures(page);
  await opens(page, () => press(page, 'Camera'));
  for (const [scale, size] of [
    ['0.5', '640 x 360'],
    ['1', '1280 x 720'],
  ]) {
    await page.selectOption('#scale', scale);
    // Noise makes most of the bits. Less than a third of a core, in a second that other programs do not disturb.
    const wanted = (all) => parseFloat(all.Saved) > 10 && parseFloat(all['One core at 30 a second']) < 33;
    const shown = await figures(page, (all) => all.After.startsWith(size) && wanted(all));
    assert.ok(Math.abs(parseFloat(shown.Noise) - 3.5) < 1, shown.Noise);
    t.diagnostic(
      Object.entries(shown)
        .map((entry) => entry.join(' '))
        .join(', '),
    );
  }
  writeFileSync(join(work, 'page.jpg'), await page.screenshot({ type: 'jpeg', quality: 85 }));
  await page.close();
});

test('mistakes are told', async (t) => {
  const noVideo = join(work, 'no-video.mp4');
  const noY4m = join(work, 'no-video.y4m');
  for (const path of [noVideo, noY4m]) writeFileSync(path, 'no video at all\n'.repeat(100));
  const refuse = () => {
    navigator.mediaDevices.getUserMedia = async () => {
      throw new DOMException('', 'NotAllowedError');
    };
  };
  const cases = [
    ['a file that is no video', (page) => drop(page, noVideo), /no-video\.mp4 is no video/],
    ['a Y4M file that is none', (page) => drop(page, noY4m), /no-video\.y4m is no Y4M/],
    ['a camera that is not allowed', (page) => press(page, 'Camera'), /not allowed/, refuse],
    ['a browser without WebCodecs', (page) => reloadWithout(page, 'VideoFrame'), /lacks WebCodecs/],
    ['a browser without WebAssembly', (page) => reloadWithout(page, 'WebAssembly'), /needs WebAssembly/],
    [
      'settings that exclude each other',
      (page) => set(page, { luma_gain: '127', luma_offset: '-200' }),
      /luma_gain.*former/,
    ],
  ];
  for (const [name, act, text, script] of cases) {
    await t.test(name, async () => {
      const page = await browser.open({ script });
      await figures(page);
      await act(page);
      assert.match(await error(page), text);
      await page.close();
    });
  }
});

test('a browser whose encoders take no quantiser goes without them', async () => {
  const page = await browser.open();
  await reloadWithout(page, 'VideoEncoder');
  assert.equal((await figures(page)).Bits, 'no encoder here takes a quantiser');
  await page.close();
});

test('a phone shows all of the page, and every control has a name', async () => {
  const page = await browser.open({ viewport: { width: 360, height: 740 } });
  await figures(page);
  await page.getByText('Single settings', { exact: true }).click();
  assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= 360);
  const nameless = await page.evaluate(() => {
    const controls = [...document.querySelectorAll('input, select, button')];
    return controls.filter((c) => !c.labels?.length && !c.ariaLabel && !c.textContent).map((c) => c.outerHTML);
  });
  assert.deepEqual(nameless, []);
  await page.close();
});
