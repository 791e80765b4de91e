// The page as a tool: keys, links, measuring, contrast. Runs the tests of further parts of the page, too:
//   node tools.test.mjs MAPEXPORT PACKAGES SOURCES
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { openPage, settle } from './browser.mjs';
import { browser, comparePictures, makePage, numbers, picture, press, yard } from './pages.mjs';
import './compare.test.mjs';
import './picture.test.mjs';
import './shading.test.mjs';
import './textures.test.mjs';

let made = null;
const yardPage = () => (made ??= makePage('tools.kob', yard));

test('keys act at once, and a link shows what its sender saw', async () => {
  const { page, trouble } = await openPage(browser, yardPage());
  // The first view fills the picture: the level touches the tenth along each side.
  const shot = await picture(page);
  const { strips } = await comparePictures(page, shot, shot);
  assert.deepEqual(strips, [1, 1, 1, 1]);
  await page.evaluate(() => document.activeElement.blur());
  await page.evaluate(() => {
    // As on a German keyboard, where others have "-".
    const question = { key: '?', code: 'Minus', bubbles: true };
    document.body.dispatchEvent(new KeyboardEvent('keydown', question));
  });
  const rows = await page.$$eval('dialog[open] kbd', (keys) =>
    keys.map((key) => key.getClientRects().length),
  );
  assert.ok(rows.length > 15 && rows.every((count) => count === 1));
  await page.keyboard.press('Escape');
  // The icons leave the names to the texts beside them.
  for (const [role, name] of [
    ['radio', 'Surface flags'],
    ['checkbox', 'Edges'],
    ['button', 'Whole level'],
  ]) {
    assert.equal(await page.getByRole(role, { name, exact: true }).count(), 1, name);
  }
  for (const key of ['5', 'l', 'ArrowLeft', '+', 'w', 'h']) await page.keyboard.press(key);
  await page.waitForFunction(() => /panel=off/.test(location.hash));
  const { hash } = new URL(page.url());
  assert.match(hash, /^#camera=[-\d.,e]+&colour=flags&show=edges&panel=off$/);
  const other = await openPage(browser, yardPage(), { hash });
  assert.equal(await other.page.evaluate(() => document.getElementById('stage').clientWidth), 1280);
  const pictures = [];
  for (const shown of [page, other.page]) {
    await shown.evaluate(() => document.activeElement.blur());
    await settle(shown);
    pictures.push(await shown.locator('#view').screenshot());
  }
  assert.ok((await comparePictures(page, ...pictures)).different < 0.001);
  await other.page.keyboard.press('h');
  await other.page.setViewportSize({ width: 800, height: 700 });
  const boxOf = (selector) => other.page.locator(selector).boundingBox();
  assert.ok((await boxOf('#stage')).width >= 480);
  const legend = await boxOf('#legend');
  assert.ok(legend.height > 20 && legend.y + legend.height < 400);
  assert.deepEqual([...trouble, ...other.trouble], []);
  await Promise.all([page.close(), other.page.close()]);
});

test('distances, axes, grid, figure and section', async () => {
  const hash = '#show=measure,section&section=-y,250&measure=0,0,0,3,4,12';
  const { page, trouble } = await openPage(browser, yardPage(), { hash });
  const readout = () => page.innerText('#readout');
  assert.equal(await readout(), 'Distance 13 (X 3, Y 4, Z 12)');
  assert.equal(await page.innerText('#section-value'), '250');
  // A ray that meets only what is cut away measures nothing.
  await page.mouse.click(520, 420);
  assert.equal(await readout(), 'Distance 13 (X 3, Y 4, Z 12)');
  await press(page, 'y');
  await page.mouse.click(520, 420);
  assert.equal(await readout(), 'Click the second point');
  await page.mouse.click(560, 420);
  const [distance, ...parts] = numbers(await readout());
  assert.ok(distance > 0 && Math.abs(Math.hypot(...parts) - distance) < 0.01 * distance);
  await page.waitForFunction(() => /^#show=measure&measure=([-\d.]+,?){6}$/.test(location.hash));
  await press(page, 'Escape');
  assert.equal(await readout(), '');
  let before = await picture(page);
  const { page: fresh } = await openPage(browser, yardPage());
  const untouched = await picture(fresh);
  assert.ok((await comparePictures(page, before, untouched)).different < 0.0001);
  await fresh.close();
  for (const key of ['y', 'r', 'u']) {
    await press(page, key);
    const now = await picture(page);
    assert.ok((await comparePictures(page, before, now)).different > 0.0003, key);
    before = now;
  }
  assert.match(await readout(), /^Grid step 100\s+Figure 180 tall$/);
  await press(page, 'i');
  assert.ok(await page.isVisible('#axes'));
  assert.deepEqual(trouble, []);
  await page.close();
});

test('every text has a contrast of at least 4.5 : 1', async () => {
  for (const scheme of ['light', 'dark']) {
    const hash = '#batch=0&show=section,measure,grid,axes';
    const { page } = await openPage(browser, yardPage(), { scheme, hash });
    await page.evaluate(() => document.getElementById('help').show());
    const poor = await page.evaluate(() => {
      const channels = (colour) => colour.match(/[\d.]+/g).map(Number);
      const luminance = (colour) =>
        channels(colour)
          .slice(0, 3)
          .map((value) => value / 255)
          .map((value) => (value > 0.04045 ? ((value + 0.055) / 1.055) ** 2.4 : value / 12.92))
          .reduce((sum, value, i) => sum + value * [0.2126, 0.7152, 0.0722][i], 0);
      const behind = (element) => {
        const { backgroundColor } = getComputedStyle(element);
        return channels(backgroundColor)[3] === 0 ? behind(element.parentElement) : backgroundColor;
      };
      return [...document.body.querySelectorAll(':not(script, noscript, option, text, :disabled)')]
        .filter((element) =>
          [...element.childNodes].some((node) => node.nodeName === '#text' && node.data.trim()),
        )
        .filter((element) => element.checkVisibility())
        .filter((element) => {
          const [less, more] = [getComputedStyle(element).color, behind(element)]
            .map(luminance)
            .sort((a, b) => a - b);
          return (more + 0.05) / (less + 0.05) < 4.5;
        })
        .map((element) => `${element.id} ${element.className} ${element.textContent}`);
    });
    assert.deepEqual(poor, [], scheme);
    await page.close();
  }
});
