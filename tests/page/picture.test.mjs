// The page against `mapexport picture` from the same cameras. tools.test.mjs runs this test, too.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';

import { openPage, settle } from './browser.mjs';
import { browser, makePage, path, runWell, yard } from './pages.mjs';

/** Triangles at random, each with a material, and so with a batch and a colour. */
function soup() {
  let state = 7;
  const random = (scale) => {
    state = (state * 48271) % 2147483647;
    return (state / 2147483647) * scale;
  };
  const shapes = Array.from({ length: 40 }, (_, i) => {
    const middle = [random(100), random(100), random(60)];
    return {
      name: `T${i}`,
      material: i,
      mesh: {
        vertices: [0, 1, 2].map(() => middle.map((at) => at + random(50) - 25)),
        faces: [
          [0, 1, 2],
          [0, 2, 1],
        ],
      },
    };
  });
  return {
    materials: shapes.map(({ name }) => ({ name })),
    root: { name: 'R', children: shapes },
  };
}

/**
 * Of the first picture's pixels that are like those around them, how many show what the second does
 * not have within a pixel of there; and how many of them are not background.
 */
const strays = (page, ...pngs) =>
  page.evaluate(
    async (encoded) => {
      let width;
      const skies = [0xdfe4ea, 0xf4f5f7]; // the backgrounds of page and picture, which become null
      const [one, two] = await Promise.all(
        encoded.map(async (base64) => {
          const bytes = Uint8Array.from(atob(base64), (character) => character.charCodeAt(0));
          const image = await createImageBitmap(new Blob([bytes]));
          const context = new OffscreenCanvas(image.width, image.height).getContext('2d');
          context.drawImage(image, 0, 0);
          width = image.width;
          const { data } = context.getImageData(0, 0, width, image.height);
          return Array.from({ length: data.length / 4 }, (_, i) => {
            const colour = data.subarray(4 * i, 4 * i + 3);
            const [r, g, b] = colour;
            return skies.includes((r << 16) | (g << 8) | b) ? null : colour;
          });
        }),
      );
      const around = [-1, 0, 1].flatMap((column) => [-width, 0, width].map((row) => row + column));
      const isLike = (a, b) => a === b || (a && b && a.every((v, k) => Math.abs(v - b[k]) < 12));
      let [stray, drawn] = [0, 0];
      for (let i = width; i < one.length - width; ++i) {
        if (i % width === 0 || i % width === width - 1) continue;
        if (!around.every((step) => isLike(one[i + step], one[i]))) continue;
        drawn += one[i] !== null;
        stray += !around.some((step) => isLike(two[i + step], one[i]));
      }
      return { stray, drawn };
    },
    pngs.map((png) => png.toString('base64')),
  );

test('the page and a picture agree within a pixel on what is where', async () => {
  const views = {
    yard: ['', 'camera=0,300,200,290,-10,300'],
    soup: ['', 'camera=0,30,-60,34,-20,60', 'camera=50,50,30,210,-10,100'],
  };
  for (const [name, links] of Object.entries(views)) {
    const file = makePage(`${name}.qob`, name === 'yard' ? yard : soup());
    for (const link of links) {
      const hash = `#${link}&colour=batch&panel=off&shading=off`; // pictures have none
      const { page } = await openPage(browser, file, { width: 600, height: 400, hash });
      await page.evaluate(() => {
        // Only the view, in the whole window.
        const { style } = document.getElementById('stage');
        style.cssText = 'position: fixed; inset: 0; width: 100%; height: 100%';
        for (const other of document.querySelectorAll('#stage > :not(#view)')) {
          other.style.visibility = 'hidden';
        }
      });
      // The first view is in no link; after a movement the new one is.
      if (link === '') await page.keyboard.press('+');
      await page.waitForFunction(() => /camera=/.test(location.hash));
      await settle(page);
      const { hash: shownLink } = new URL(page.url());
      const shown = await page.locator('#view').screenshot();
      const options = ['--size', '600x400', '--camera', shownLink, '--colour', 'batch'];
      runWell('picture', `${name}.qob`, '-o', `${name}.png`, ...options);
      const drawn = readFileSync(path(`${name}.png`));
      for (const pair of [
        [shown, drawn],
        [drawn, shown],
      ]) {
        const found = await strays(page, ...pair);
        // Where triangles cut each other at a flat angle, depths that differ a little move the cut.
        assert.ok(found.stray * 10000 < found.drawn, `${name} ${shownLink}: ${found.stray}`);
        assert.ok(found.drawn > 20000, `${name} ${shownLink}: ${found.drawn}`);
      }
      await page.close();
    }
  }
});
