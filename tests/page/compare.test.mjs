// The page of two models: what diff says, the colours, the switch. tools.test.mjs runs these, too.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdirSync } from 'node:fs';
import { test } from 'node:test';

import { openPage } from './browser.mjs';
import {
  browser,
  comparePictures,
  folder,
  makePage,
  mapexport,
  path,
  picture,
  press,
  record,
  runWell,
} from './pages.mjs';

const hostile = '<img src=x onerror="window.hacked=1">\u202e';
/** A quad on the ground, of two triangles, x from `left`. */
const tile = (left, material, more) => ({
  name: `Tile${left}`,
  material,
  mesh: {
    vertices: [0, 10, 10, 0].map((x, i) => [left + x, i < 2 ? 0 : 8, 0]),
    faces: [
      [0, 1, 2],
      [0, 2, 3],
    ],
  },
  ...more,
});
const scene = (...children) => ({
  materials: [{ name: hostile }, { name: 'New' }],
  root: { name: 'Level', children },
});
const hull = { userProperties: 'notrendered' };

/** The page of two models, their difference as JSON, and as the words of its text. */
async function compare(a, b, options = {}) {
  for (const [name, model] of Object.entries({ old: a, new: b })) {
    mkdirSync(path(name), { recursive: true });
    makePage(`${name}/level.kob`, model);
  }
  runWell('view', 'old/level.kob', '--compare', 'new/level.kob', '-o', 'compare.html');
  const diff = (...more) =>
    spawnSync(mapexport, ['diff', 'old/level.kob', 'new/level.kob', ...more], {
      cwd: folder,
      encoding: 'utf8',
    });
  return {
    ...(await openPage(browser, path('compare.html'), options)),
    difference: JSON.parse(diff('--json').stdout),
    words: diff().stdout.split(/\s+/).filter(Boolean),
  };
}

test('a comparison shows what diff says, in colour, and a link keeps the switch', async () => {
  const old = scene(tile(0, 0), tile(20, 0), tile(100, 0), tile(40, 0, hull));
  const changed = scene(tile(0, 0), tile(20, 1), tile(60, 0), tile(80, 0, hull));
  const { page, trouble, difference, words } = await compare(old, changed);
  const shown = (await page.innerText('#difference')).split(/\s+/).filter(Boolean);
  // Changes have no title: they are below the rows.
  for (const word of words.filter((each) => each !== 'changes'))
    assert.ok(shown.includes(word), `${word} is not in ${shown}`);
  const { a, onlyA, onlyB } = difference.triangles;
  const legend = await page.innerText('#legend');
  for (const text of [`only in A: ${onlyA}`, `only in B: ${onlyB}`, `in both: ${a - onlyA}`]) {
    assert.ok(legend.includes(text), `${text} is not in ${legend}`);
  }
  assert.equal(await page.title(), 'old/level.kob → new/level.kob');
  assert.match(await page.textContent('#keys'), /compare: only A, old\/level.kob/);
  await page.waitForSelector('#legend [title="new/level.kob"]');
  const seen = [];
  for (const key of ['v', 'j', 'k', 'n']) {
    await press(page, key);
    const png = await picture(page);
    for (const other of seen) {
      assert.ok(
        (await comparePictures(page, png, other)).different > 0.001,
        `${key} changes nothing`,
      );
    }
    seen.push(png);
  }
  await page.waitForFunction(() => location.hash === '#compare=differences');
  const linked = await openPage(browser, path('compare.html'), { hash: '#compare=differences' });
  assert.ok((await comparePictures(page, await picture(linked.page), seen[3])).different < 0.001);
  // A tile is in both files: what is shown is what can be clicked.
  const rows = page.locator('#batches tbody button');
  const labels = await rows.allInnerTexts();
  assert.deepEqual([...new Set(labels.map((label) => label[0]))], ['A', 'B']);
  await page.locator('#batches tr', { hasText: 'New' }).click();
  await press(page, 'z', 'Escape', 'Enter');
  assert.match((await record(page)).Face, /of batch B \d/);
  await press(page, 'j', 'Escape', 'Enter');
  assert.match((await record(page)).Face, /of batch A \d/);
  assert.equal(await page.evaluate(() => window.hacked), undefined);
  assert.deepEqual([...trouble, ...linked.trouble], []);
  await Promise.all([page.close(), linked.page.close()]);
});

test('equal files are said to be equal, and collision faces that differ are seen', async () => {
  const equal = await compare(scene(tile(0, 0)), scene(tile(0, 0)));
  assert.equal(await equal.page.innerText('#difference h2'), 'equal: 2 triangles');
  assert.equal(await equal.page.innerText('#legend'), 'in both: 2');
  const plain = await picture(equal.page);
  await equal.page.locator('#batches tr', { hasText: 'B 0' }).click();
  const marked = await comparePictures(equal.page, await picture(equal.page), plain);
  assert.ok(marked.different > 0.001, 'what is in both is not marked as part of B');
  const one = scene(tile(0, 0), tile(40, 0, hull));
  const other = await compare(one, scene(tile(0, 0), tile(60, 0, hull)));
  assert.ok(await other.page.isChecked('input[value=undrawn]'));
  assert.deepEqual([...equal.trouble, ...other.trouble], []);
  await Promise.all([equal.page.close(), other.page.close()]);
});
