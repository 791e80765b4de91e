// The page of `mapexport view` in a real browser:
//   node page.test.mjs MAPEXPORT PACKAGES SOURCES
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';

import { openPage, settle } from './browser.mjs';
import {
  browser,
  cells,
  comparePictures,
  folder,
  inspect,
  makePage,
  mapexport,
  numbers,
  path,
  picture,
  press,
  record,
  runWell,
  sources,
  yard,
} from './pages.mjs';

/** An upright quad of two triangles that faces -y in the scene, x from `left`. */
const wall = (left, more) => ({
  name: 'Wall',
  mesh: {
    vertices: [0, 10, 10, 0].map((x, i) => [left + x, 0, i < 2 ? 0 : 8]),
    faces: [
      [0, 1, 2],
      [0, 2, 3],
    ],
  },
  ...more,
});

const hostile =
  '</script><script>window.hacked=1</script><img src=x onerror="window.hacked=1">\u202e\u001b[31m\u180e\u{e0001}';
const walls = {
  materials: [
    { name: hostile, diffuse: [0.8, 0.1, 0.1] },
    { name: 'Long_'.repeat(40), diffuse: [0.1, 0.8, 0.1], diffuseMap: { file: `${hostile}.bmp` } },
  ],
  root: {
    name: hostile,
    children: [
      wall(0, { material: 0, userProperties: 'climbable\nnotcollidable3d' }),
      wall(20, { material: 1, userProperties: 'floorface' }),
      wall(40, { userProperties: 'notrendered\nclimbable' }),
      { name: `static_${hostile}`, children: [wall(60, { material: 0 })] },
    ],
  },
};

for (const layout of ['qob', 'kob']) {
  test(`the tables of a ${layout} count what inspect counts`, async () => {
    const file = makePage(`yard.${layout}`, yard, ['--cxp', join(sources, 'examples/yard.cxp')]);
    const {
      materials,
      groups: [group],
    } = inspect(`yard.${layout}`);
    const { page, trouble } = await openPage(browser, file);
    const drawn = (index) =>
      group.batches
        .filter(({ material }) => material === index)
        .reduce((sum, batch) => sum + batch.faces.length, 0);
    const rows = materials.map(({ name, textureName }, index) => [
      name,
      textureName === 'NULL' ? 'none' : textureName,
      `${drawn(index)}`,
    ]);
    if (drawn(-1) > 0) rows.push(['no material', 'none', `${drawn(-1)}`]);
    assert.deepEqual(await cells(page, 'materials'), rows);
    assert.deepEqual(
      await cells(page, 'batches'),
      group.batches.map((batch, index) => [
        `${index}`,
        materials[batch.material]?.name ?? 'no material',
        `${batch.faces.length}`,
        `${batch.corners.length}`,
      ]),
    );
    await page.keyboard.press('/');
    await page.keyboard.type('SAND bmp');
    assert.deepEqual(
      await cells(page, 'materials'),
      rows.filter(([name]) => name === 'Sandstone'),
    );
    assert.equal(await page.textContent('#materials .count'), `1 of ${materials.length}`);
    await page.keyboard.press('Escape');
    await page.click('#materials th:last-child button');
    assert.deepEqual(
      (await cells(page, 'materials')).map((row) => Number(row[2])),
      rows.map((row) => Number(row[2])).sort((a, b) => b - a),
    );
    if (layout === 'kob') {
      const sets = await cells(page, 'sets');
      assert.deepEqual(
        sets.map((row) => Number(row[3])),
        group.surfaceSets.map(({ faces }) => faces.length),
      );
    }
    assert.deepEqual(trouble, []);
    await page.close();
  });
}

test('every colouring, part and movement changes the picture, and none is blank', async () => {
  const { page, trouble } = await openPage(browser, path('yard.kob.html'), {
    width: 900,
    height: 500,
    scheme: 'dark',
  });
  const seen = new Map();
  const see = async (what, ...keys) => {
    await press(page, ...keys);
    const png = await picture(page);
    assert.ok((await comparePictures(page, png, png)).colours > 30, `${what} is blank`);
    const same = seen.get(png.toString('base64'));
    assert.equal(same, undefined, `${what} looks like ${same}`);
    seen.set(png.toString('base64'), what);
  };
  for (const key of ['1', '2', '3', '4', '5', '6']) await see(`colouring ${key}`, key);
  for (const key of ['c', 'p', 'l', 'b']) await see(`part ${key}`, key);
  await see('orbit', 'ArrowLeft', 'ArrowUp');
  await see('zoom', '+');
  await see('walk', 'g', 'w', 'a', 'PageUp');
  await see('look', 'ArrowRight');
  await page.selectOption('#system', '2');
  await see('another coordinate system');
  assert.deepEqual(trouble, []);
  await page.close();
});

test('whatever the coordinate system, the level stands as it stood in the scene', async () => {
  const pictures = [];
  for (const system of ['0', '1', '2', '3']) {
    const options = ['--coordinates', system];
    const file = makePage(`system${system}.qob`, yard, options, options);
    const { page } = await openPage(browser, file, { width: 900, height: 400 });
    await press(page, '3');
    pictures.push(await picture(page));
    const { different } = await comparePictures(page, pictures[0], pictures.at(-1));
    assert.ok(different < 0.005, `system ${system}: ${different} of the picture differs`);
    await page.close();
  }
});

test('a click on a known face shows its record and marks its rows', async () => {
  const file = makePage('walls.kob', walls);
  const {
    groups: [group],
  } = inspect('walls.kob');
  const { page, trouble } = await openPage(browser, file);
  const keywords = {
    0x09: 'climbable, notcollidable3d',
    0x10: 'floorface',
    0x05: 'climbable, notrendered',
    0x80: '(static node)',
  };
  for (const [index, face] of group.faces.entries()) {
    // The address brings the face into the middle; then it is chosen anew, by the pointer.
    await page.evaluate((hash) => {
      location.hash = hash;
    }, `face=${index}`);
    await settle(page);
    await press(page, 'Escape');
    assert.deepEqual(await record(page), {});
    await page.click('#view');
    const shown = await record(page);
    const set = group.surfaceSets[face.surfaceSet];
    const plane =
      face.batch < 0
        ? group.planes[face.position]
        : group.batches[face.batch].faces[face.position].plane;
    assert.match(shown.Place, new RegExp(`^${index} of`));
    assert.equal(shown.Flags, keywords[set.flags]);
    assert.deepEqual(
      numbers(shown.Normal),
      plane.slice(0, 3).map((value) => Number(value.toPrecision(6))),
    );
    assert.match(shown.Set, new RegExp(`^${face.surfaceSet}\\b`));
    const marked = await page.$$eval('tr.of-face', (rows) =>
      rows.map((row) => Number(row.dataset.id)),
    );
    if (face.batch < 0) {
      assert.match(shown.Face, /not drawn/);
      assert.deepEqual(marked, [face.surfaceSet]);
    } else {
      const batch = group.batches[face.batch];
      assert.equal(shown.Face, `${face.position} of batch ${face.batch}`);
      assert.deepEqual(marked, [batch.material, face.batch, face.surfaceSet]);
    }
  }
  assert.deepEqual(trouble, []);
  await page.close();
});

test('a divided level is coloured by group and shows the limits of each', async () => {
  const file = makePage('parts.kob', yard, ['--longest-list', '300']);
  const { groups } = inspect('parts.kob');
  const { page, trouble } = await openPage(browser, file, { width: 900, height: 500 });
  const before = await picture(page);
  await press(page, '7');
  assert.ok((await comparePictures(page, before, await picture(page))).different > 0.02);
  const drawn = (group) => group.batches.reduce((sum, { faces }) => sum + faces.length, 0);
  assert.deepEqual(
    (await cells(page, 'groups')).map((row) => row.slice(0, 2)),
    groups.map((group) => [group.name, `${drawn(group)}`]),
  );
  await page.click('#groups tbody tr:last-child button');
  const shown = await record(page);
  assert.equal(shown.Group, groups.at(-1).name);
  assert.match(shown.Faces, new RegExp(`^${groups.at(-1).faces.length} of 65,536 \\(`));
  await page.evaluate(() => {
    location.hash = 'face=3&group=1';
  });
  await settle(page);
  assert.equal((await record(page)).Group, groups[1].name);
  assert.deepEqual(trouble, []);
  await page.close();
});

test('names are text, and a narrow window needs no sideways scrolling', async () => {
  const name = '<img src=x onerror=alert(1)>.kob';
  const file = makePage(name, walls);
  assert.ok(!readFileSync(file, 'utf8').includes('hacked'));
  for (const width of [480, 320]) {
    const { page, trouble } = await openPage(browser, file, { width, hash: '#material=0' });
    assert.equal(await page.title(), name);
    assert.match(
      (await cells(page, 'materials'))[0][0],
      /^<\/script>.*\\u202E\\u001B\[31m\\u180E\\U000E0001$/,
    );
    assert.equal(await page.evaluate(() => window.hacked ?? document.images.length), 0);
    assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth));
    assert.deepEqual(trouble, []);
    // What got in all the same could not redirect the page's links.
    const base = await page.evaluate(() => {
      document.head.append(Object.assign(document.createElement('base'), { href: 'http://a/' }));
      return document.baseURI;
    });
    assert.match(base, /^file:/);
    await page.close();
  }
});

test('models with little or nothing to see are shown without errors', async () => {
  const odd = {
    materials: [{ name: 'M' }],
    root: { name: 'R', children: [wall(0, { material: 0 })] },
  };
  odd.root.children[0].mesh.vertices[2] = [123.25, 0, 8];
  const far = structuredClone(odd);
  far.root.children.push(wall(3e37, {}));
  const pages = [
    makePage('empty.kob', { root: { name: 'R' } }),
    makePage('empty.qob', { root: { name: 'R' } }),
    makePage('drawn.kob', odd),
    makePage('far.kob', far),
    makePage('hull.kob', {
      root: { name: 'R', children: [wall(0, { userProperties: 'notrendered' })] },
    }),
  ];
  for (const [file, bits] of [
    ['nan', 0x7fc00000],
    ['infinite', 0xff800000],
    ['huge', 0x7f7fffff],
  ]) {
    const bytes = readFileSync(path('drawn.kob'));
    const number = Buffer.alloc(4);
    number.writeFloatLE(123.25);
    for (let at = bytes.indexOf(number); at >= 0; at = bytes.indexOf(number))
      bytes.writeUInt32LE(bits, at);
    writeFileSync(path(`${file}.kob`), bytes);
    runWell('view', `${file}.kob`);
    pages.push(path(`${file}.kob.html`));
  }
  const hash =
    '#camera=1e300,1e30,3,4,5,-6&show=measure,section,figure,constructor&colour=__proto__&face=9' +
    '&section=z,1e39&figure=1e30,2,3&measure=1e300,1,1,-1e300,2,2&exported=9&batch=-7';
  for (const file of pages) {
    const { page, trouble } = await openPage(browser, file, { width: 800, height: 400, hash });
    await press(page, ...'26cplb', 'Enter', ...'Zxfiruym', 'Enter', ...'yg');
    assert.deepEqual(trouble, [], file);
    await page.close();
  }
});

test('the page that --watch serves reloads after an export and keeps its address', async () => {
  const scene = path('watched.scene.json');
  const write = (...walls) =>
    writeFileSync(
      scene,
      JSON.stringify({
        format: 'mapexport-scene',
        version: 1,
        root: { name: 'R', children: walls.map((left) => wall(left)) },
      }),
    );
  write(0);
  const options = ['--watch', '--view', '--fresh', '--no-log'];
  const watch = spawn(mapexport, ['export', scene, 'watched.kob', ...options], { cwd: folder });
  try {
    const [line] = await once(watch.stdout, 'data');
    const url = String(line).replace('page: ', '').trim();
    const page = await browser.newPage();
    const trouble = [];
    page.on('pageerror', (error) => trouble.push(error.message));
    await page.goto(`${url}#batch=0`);
    const shows = (text) => page.getByText(text).first().waitFor();
    await shows('2 triangles');
    write(0, 20);
    await shows('4 triangles');
    assert.ok(page.url().startsWith(`${url}#batch=0&camera=`));
    assert.deepEqual(trouble, []);
    await page.close();
  } finally {
    watch.kill();
  }
});
