// Textures in the page: which way up they are, their switch, and what lacks one.
import assert from 'node:assert/strict';
import { mkdirSync, writeFileSync } from 'node:fs';
import { test } from 'node:test';

import { openPage } from './browser.mjs';
import { browser, inspect, makePage, middleOf, path, press } from './pages.mjs';

/** A TGA file of one column, its pixels from the top as [b, g, r, a]. */
const tga = (...pixels) =>
  Buffer.from([0, 0, 2, ...Array(9).fill(0), 1, 0, pixels.length, 0, 32, 0x28, ...pixels.flat()]);

const quad = (left, material) => ({
  name: 'Wall',
  material,
  mesh: {
    vertices: [0, 10, 10, 0].map((x, i) => [left + x, 0, i < 2 ? 0 : 10]),
    faces: [
      [0, 1, 2],
      [0, 2, 3],
    ],
    textureVertices: [
      [0, 0, 0],
      [1, 0, 0],
      [1, 1, 0],
      [0, 1, 0],
    ],
    textureFaces: [
      [0, 1, 2],
      [0, 2, 3],
    ],
  },
});

test('textures stand upright, can be switched off, and a material without one is named', async () => {
  const clear = [0, 255, 0, 0];
  mkdirSync(path('maps'));
  writeFileSync(
    path('maps/flag.tga'),
    tga(...Array(8).fill([0, 0, 255, 255]), ...Array(8).fill([255, 0, 0, 255])),
  );
  writeFileSync(path('maps/hole.tga'), tga(...Array(16).fill(clear)));
  const hostile = '<img src=x onerror="window.hacked=1">';
  const file = makePage(
    'textures.kob',
    {
      materials: ['flag.tga', 'hole.tga', `${hostile}.tga`].map((name, i) => ({
        name: `M${i}`,
        diffuse: [0.1, 0.8, 0.1],
        diffuseMap: { file: name },
      })),
      root: { name: 'Root', children: [quad(0, 0), quad(20, 1), quad(40, 2)] },
    },
    [],
    ['--textures', 'maps'],
  );
  const batch = inspect('textures.kob').groups[0].batches.findIndex(({ material }) => material === 0);
  const { page, trouble } = await openPage(browser, file, { hash: `#batch=${batch}&face=0` });
  await press(page, 'z', 'Escape', 'h');
  const textured = await middleOf(page);
  const lastRed = textured.findLastIndex(([r, , b]) => r > 100 && b < 60);
  const isBlue = ([r, , b]) => b > 100 && r < 60;
  const firstBlue = textured.findIndex((colour, y) => y > 10 && isBlue(colour)); // below the frame
  assert.ok(lastRed > 0 && firstBlue > lastRed, `red to ${lastRed}, blue from ${firstBlue}`);
  await press(page, 't');
  const plain = await middleOf(page);
  assert.ok(!plain.slice(10, -10).some(([r, , b]) => Math.abs(r - b) > 60), 'its own colour is white');
  await page.waitForFunction(() => location.hash.includes('textures=off'));
  assert.match(await page.textContent('#warnings'), /No picture for 1 material: M2 \(<img src=x/);
  assert.match(await page.textContent('#keys'), /textures/);
  assert.equal(await page.evaluate(() => window.hacked), undefined);
  assert.deepEqual(trouble, []);
  await page.close();
});
