// What the tests of the page share: pages of models, the browser, and comparing pictures.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before } from 'node:test';

import { settle, startBrowser } from './browser.mjs';

export const [mapexport, packages, sources] = process.argv.slice(2);
export const folder = mkdtempSync(join(tmpdir(), 'mapexport-page-'));
export const path = (name) => join(folder, name);
export let browser;
before(async () => {
  browser = await startBrowser(packages);
});
after(async () => {
  await browser?.close();
  rmSync(folder, { recursive: true });
});

const run = (...args) =>
  spawnSync(mapexport, args, { cwd: folder, encoding: 'utf8', maxBuffer: 1 << 28 });

export function runWell(...args) {
  const { status, stdout, stderr } = run(...args);
  assert.equal(status, 0, stderr);
  return stdout;
}

/** Exports a scene, an object or the path of one, and makes the page of the model. */
export function makePage(name, scene, options = [], viewOptions = []) {
  let file = scene;
  if (typeof scene === 'object') {
    file = path(`${name}.scene.json`);
    writeFileSync(file, JSON.stringify({ format: 'mapexport-scene', version: 1, ...scene }));
  }
  runWell('export', file, name, '--fresh', '--seed', '1', '--quiet', ...options);
  runWell('view', name, ...viewOptions);
  return path(`${name}.html`);
}

export const inspect = (name) => JSON.parse(runWell('inspect', name, '--json'));
export const yard = join(sources, 'examples/yard.scene.json');

/** The texts of a table's cells, row by row. */
export const cells = (page, id) =>
  page.$$eval(`#${id} tbody tr`, (rows) =>
    rows.map((row) => [...row.children].map((cell) => cell.innerText)),
  );
/** The record of what is chosen, by its terms. */
export const record = (page) =>
  page.$$eval('#chosen dt', (terms) =>
    Object.fromEntries(terms.map((term) => [term.innerText, term.nextSibling.innerText])),
  );
export const numbers = (text) => text.match(/-?\d[\d.e+-]*/g).map(Number);

export async function press(page, ...keys) {
  await page.focus('#view');
  for (const key of keys) await page.keyboard.press(key);
  await settle(page);
}

/** A picture of the view, with no more than the level in it. */
export async function picture(page) {
  await page.focus('summary');
  await settle(page);
  return page.locator('#view').screenshot();
}

/** The colours, [r, g, b], in the middle of the picture from the top. */
export async function middleOf(page) {
  await settle(page);
  const png = (await page.locator('#view').screenshot()).toString('base64');
  return page.evaluate(async (base64) => {
    const bytes = Uint8Array.from(atob(base64), (character) => character.charCodeAt(0));
    const image = await createImageBitmap(new Blob([bytes]));
    const context = new OffscreenCanvas(image.width, image.height).getContext('2d');
    context.drawImage(image, 0, 0);
    const { data } = context.getImageData(Math.floor(image.width / 2), 0, 1, image.height);
    return Array.from({ length: image.height }, (_, y) => [...data.slice(4 * y, 4 * y + 3)]);
  }, png);
}

/**
 * How many colours the first of two pictures has, whether anything is in the tenth along each of its
 * sides, and the share of pixels that differ much.
 */
export const comparePictures = (page, ...pngs) =>
  page.evaluate(
    async (encoded) => {
      let size;
      const [one, two] = await Promise.all(
        encoded.map(async (base64) => {
          const bytes = Uint8Array.from(atob(base64), (character) => character.charCodeAt(0));
          const image = await createImageBitmap(new Blob([bytes]));
          const context = new OffscreenCanvas(image.width, image.height).getContext('2d');
          context.drawImage(image, 0, 0);
          size = [image.width, image.height];
          return context.getImageData(0, 0, image.width, image.height).data;
        }),
      );
      let different = 0;
      const strips = [0, 0, 0, 0];
      for (let i = 0; i < one.length; i += 4) {
        different += [0, 1, 2].some(
          (channel) => Math.abs(one[i + channel] - two[i + channel]) > 24,
        );
        if ([0, 1, 2].every((channel) => one[i + channel] === one[channel])) continue;
        const x = ((i / 4) % size[0]) / size[0];
        const y = i / 4 / size[0] / size[1];
        [x, 1 - x, y, 1 - y].forEach((gap, side) => (strips[side] |= gap < 0.1));
      }
      return {
        strips,
        colours: new Set(new Uint32Array(one.buffer)).size,
        different: different / (one.length / 4),
      };
    },
    pngs.map((png) => png.toString('base64')),
  );
