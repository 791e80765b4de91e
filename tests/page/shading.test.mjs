// Contact shading in the page. tools.test.mjs runs this test, too.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { openPage, settle } from './browser.mjs';
import { browser, makePage, middleOf, press } from './pages.mjs';

const quad = (name, ...vertices) => ({
  name,
  mesh: {
    vertices,
    faces: [
      [0, 1, 2],
      [0, 2, 3],
    ],
  },
});

test('contact shading darkens a corner, also in a new context; its switch and link work', async () => {
  const file = makePage('corner.kob', {
    root: {
      name: 'Root',
      children: [
        quad('Floor', [0, 0, 0], [40, 0, 0], [40, 40, 0], [0, 40, 0]),
        quad('Wall', [0, 40, 0], [40, 40, 0], [40, 40, 20], [0, 40, 20]),
      ],
    },
  });
  const view = '#camera=20,16,0,0,-20,40&panel=off';
  const open = (hash) => openPage(browser, file, { hash });
  const lightsOf = async (page) => {
    await page.evaluate(() => document.activeElement.blur()); // the view's frame is not wanted
    return (await middleOf(page)).map(([r, g, b]) => r + g + b);
  };
  const { page, trouble } = await open(view);
  const shaded = await lightsOf(page);
  await page.evaluate(async () => {
    const view = document.getElementById('view');
    const context = view.getContext('webgl2').getExtension('WEBGL_lose_context');
    for (const name of ['lost', 'restored']) {
      const told = new Promise((done) => view.addEventListener(`webglcontext${name}`, done));
      setTimeout(() => (name === 'lost' ? context.loseContext() : context.restoreContext()));
      await told;
    }
  });
  for (const width of [1200, 1280]) {
    await page.setViewportSize({ width, height: 800 });
    await settle(page);
  }
  assert.deepEqual(await lightsOf(page), shaded, 'a new graphics context draws something else');
  await press(page, '.');
  await page.waitForFunction(() => location.hash.endsWith('&shading=off'));
  const plain = await lightsOf(page);
  const corner = plain.lastIndexOf(plain[100]); // the foot of the wall
  const shares = plain.map((light, y) => shaded[y] / light);
  assert.ok(shares[corner] > 0.6 && shares[corner] < 0.9, `corner: ${shares[corner]}`);
  assert.deepEqual([...shares.slice(100, 200), ...shares.slice(-50)], Array(150).fill(1));
  const other = await open(new URL(page.url()).hash);
  assert.deepEqual(await lightsOf(other.page), plain);
  assert.equal(await other.page.isChecked('[value=shading]'), false);
  assert.deepEqual([...trouble, ...other.trouble], []);
  await Promise.all([page.close(), other.page.close()]);
});
