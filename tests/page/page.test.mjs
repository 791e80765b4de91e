// The page of `mapexport view` in a real browser:
//   node page.test.mjs MAPEXPORT PACKAGES SOURCES
import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { once } from 'node:events';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';

import { openPage, settle, startBrowser } from './browser.mjs';

const [mapexport, packages, sources] = process.argv.slice(2);
const folder = mkdtempSync(join(tmpdir(), 'mapexport-page-'));
const path = (name) => join(folder, name);
let browser;
before(async () => {
  browser = await startBrowser(packages);
});
after(async () => {
  await browser?.close();
  rmSync(folder, { recursive: true });
});

const run = (...args) =>
  spawnSync(mapexport, args, { cwd: folder, encoding: 'utf8', maxBuffer: 1 << 28 });

function runWell(...args) {
  const { status, stdout, stderr } = run(...args);
  assert.equal(status, 0, stderr);
  return stdout;
}

/** Exports a scene, an object or the path of one, and makes the page of the model. */
function makePage(name, scene, options = [], viewOptions = []) {
  let file = scene;
  if (typeof scene === 'object') {
    file = path(`${name}.scene.json`);
    writeFileSync(file, JSON.stringify({ format: 'mapexport-scene', version: 1, ...scene }));
  }
  runWell('export', file, name, '--fresh', '--seed', '1', '--quiet', ...options);
  runWell('view', name, ...viewOptions);
  return path(`${name}.html`);
}

const inspect = (name) => JSON.parse(runWell('inspect', name, '--json'));
const yard = join(sources, 'examples/yard.scene.json');

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

/** The texts of a table's cells, row by row. */
const cells = (page, id) =>
  page.$$eval(`#${id} tbody tr`, (rows) =>
    rows.map((row) => [...row.children].map((cell) => cell.innerText)),
  );
/** The record of what is chosen, by its terms. */
const record = (page) =>
  page.$$eval('#chosen dt', (terms) =>
    Object.fromEntries(terms.map((term) => [term.innerText, term.nextSibling.innerText])),
  );
const numbers = (text) => text.match(/-?\d[\d.e+-]*/g).map(Number);

async function press(page, ...keys) {
  await page.focus('#view');
  for (const key of keys) await page.keyboard.press(key);
  await settle(page);
}

/** A picture of the view, with no more than the level in it. */
async function picture(page) {
  await page.focus('summary');
  await settle(page);
  return page.locator('#view').screenshot();
}

/**
 * How many colours the first of two pictures has, whether anything is in the tenth along each of its
 * sides, and the share of pixels that differ much.
 */
const comparePictures = (page, ...pngs) =>
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

test('keys act at once, and a link shows what its sender saw', async () => {
  const { page, trouble } = await openPage(browser, path('yard.kob.html'));
  // The first view fills the picture: the level touches the tenth along each side.
  const shot = await picture(page);
  const { strips } = await comparePictures(page, shot, shot);
  assert.deepEqual(strips, [1, 1, 1, 1]);
  await page.evaluate(() => document.activeElement.blur());
  await page.keyboard.press('?');
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
  const other = await openPage(browser, path('yard.kob.html'), { hash });
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
  const { page, trouble } = await openPage(browser, path('yard.kob.html'), { hash });
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
  const { page: fresh } = await openPage(browser, path('yard.kob.html'));
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
    const { page } = await openPage(browser, path('yard.kob.html'), { scheme, hash });
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
