// Converts what the exporter writes and looks at what came of it: the glTF files with the format's
// own validator, all of them by exporting them again, and the orientation of the faces.
//
//   check_convert.mjs MAPEXPORT SOURCE MODULES WORK
//
// SOURCE is the project's folder, MODULES has the validator in node_modules, WORK is a folder for the
// files. Prints what is wrong, one line each, and ends with 1 when anything is.
import { spawnSync } from 'node:child_process';
import { mkdirSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { basename, join, resolve } from 'node:path';

const [mapexport, source, modules, work] = process.argv.slice(2).map((path) => resolve(path));
const validator = createRequire(join(modules, 'package.json'))('gltf-validator');
let faults = 0;
let checked = 0;

function fault(text) {
  ++faults;
  console.log(text);
}

function call(...args) {
  const run = spawnSync(mapexport, args, { cwd: work, encoding: 'utf8', maxBuffer: 1 << 30 });
  return { status: run.status, output: run.stdout, errors: run.stderr };
}

/** Calls and expects one of the statuses; null otherwise. */
function expectCall(statuses, ...args) {
  const run = call(...args);
  if (statuses.includes(run.status)) return run;
  fault(`${args.join(' ')}: ended with ${run.status}: ${run.errors}`);
  return null;
}

async function validate(file) {
  const read = (uri) => new Uint8Array(readFileSync(join(work, decodeURIComponent(uri))));
  const report = await validator.validateBytes(read(file), {
    uri: file,
    externalResourceFunction: async (uri) => read(uri),
  });
  const { numErrors, numWarnings, messages } = report.issues;
  if (numErrors + numWarnings === 0) return;
  const worst = messages.find((message) => message.severity < 2);
  fault(`${file}: ${numErrors} errors, ${numWarnings} warnings, such as ${JSON.stringify(worst)}`);
}

/** Accessor `index` of a .glb as an array of arrays. */
function accessor(json, bin, index) {
  const { bufferView, byteOffset = 0, count, type, componentType } = json.accessors[index];
  const width = { SCALAR: 1, VEC2: 2, VEC3: 3, VEC4: 4 }[type];
  const [bytes, read] = { 5126: [4, 'readFloatLE'], 5125: [4, 'readUInt32LE'] }[componentType];
  const start = (json.bufferViews[bufferView].byteOffset ?? 0) + byteOffset;
  return Array.from({ length: count }, (_, i) =>
    Array.from({ length: width }, (_, k) => bin[read](start + (i * width + k) * bytes)));
}

function primitives(file) {
  const bytes = readFileSync(join(work, file));
  const length = bytes.readUInt32LE(12);
  const json = JSON.parse(bytes.subarray(20, 20 + length).toString());
  const bin = bytes.subarray(28 + length);
  return json.meshes.flatMap((mesh) => mesh.primitives).map(({ indices, attributes }) => ({
    indices: accessor(json, bin, indices).flat(),
    positions: accessor(json, bin, attributes.POSITION),
    normals: 'NORMAL' in attributes ? accessor(json, bin, attributes.NORMAL) : null,
    textures: 'TEXCOORD_0' in attributes ? accessor(json, bin, attributes.TEXCOORD_0) : null,
  }));
}

// --- the checks -------------------------------------------------------------------------------------

/** The value of an export option that may stand among `options` by number or name; 0 without it. */
function row(options, name, names) {
  const at = options.indexOf(name);
  const value = at < 0 ? '0' : options[at + 1];
  return names.includes(value) ? names.indexOf(value) : Number(value);
}

const systems = ['left-handed', 'right-handed', 'max', 'inverse-max'];
const textureModes = ['invert-y', 'invert-x', 'invert-xy', 'max'];

const isNear = (a, b) => a === b || Math.abs(a - b) <= 1e-5 * (1 + Math.abs(b));

/** What `diff` says of two models. */
const difference = (a, b) => JSON.parse(expectCall([0, 5], 'diff', '--json', a, b).output);

/** Compares a model with what an export of its converted form is. */
function compare(what, model, again, hasNodes) {
  const { triangles, collisionOnly, materials } = difference(model, again);
  const undrawn = collisionOnly.a;
  if (triangles.b !== triangles.a - (hasNodes ? 0 : undrawn)) {
    fault(`${what}: ${triangles.b} of ${triangles.a} triangles, ${undrawn} of them not drawn`);
  }
  const [found, wanted] = [triangles.boundsB, triangles.boundsA].map((box) => box?.flat() ?? []);
  if ((hasNodes || undrawn === 0) && !wanted.every((value, i) => isNear(found[i], value))) {
    fault(`${what}: bounds ${found} instead of ${wanted}`);
  }
  // An .obj gives every face a material; this one stands for none.
  const lost = materials.filter(({ name, change, triangles: { a } }) =>
    change === 'removed' ? a > 0 : change === 'added' && name !== 'DefaultMaterial');
  if (hasNodes && lost.length > 0) fault(`${what}: materials ${JSON.stringify(lost)}`);
}

async function checkScene(scene, layout, options) {
  const model = `model.${layout}`;
  const exported =
    expectCall([0, 4], 'export', scene, model, '--fresh', '--seed', '0', ...options);
  if (!exported) return;
  const { triangles, collisionOnly } = difference(model, model);
  const system = ['--coordinates', String(row(options, '--coordinates', systems))];
  const turned = [...system, '--texture-coordinates',
    String(row(options, '--texture-coordinates', textureModes))];
  for (const extension of ['glb', 'gltf', 'obj', 'ply', 'stl']) {
    const what = `${basename(scene)} as ${layout} as ${extension}`;
    const output = `out.${extension}`;
    const isGltf = extension === 'glb' || extension === 'gltf';
    const hasNodes = isGltf || extension === 'obj';
    // Of nothing, no file is made.
    const isEmpty = triangles.a === (hasNodes ? 0 : collisionOnly.a);
    const converted =
      expectCall([isEmpty ? 1 : exported.status], 'convert', model, output, ...turned);
    ++checked;
    if (!converted || isEmpty) continue;
    if (isGltf) await validate(output);
    const again = `again.${layout}`;
    if (expectCall([0, 4], 'export', output, again, '--fresh', '--no-weld', ...system)) {
      compare(what, model, again, hasNodes);
    }
  }
  for (const file of readdirSync(work)) rmSync(join(work, file));
}

const subtract = (a, b) => a.map((value, i) => value - b[i]);
const dot = (a, b) => a.reduce((sum, value, i) => sum + value * b[i], 0);
const cross = (a, b) =>
  [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]];

/** A box around (0, 0, 0), drawn or not, plain or mirrored: all its faces must look outward. */
function checkOrientation(system, mode, mirrored, drawn) {
  const what = `box in ${systems[system]}, ${mirrored ? 'mirrored' : 'plain'}, drawn ${drawn}`;
  const vertices = [];
  for (let i = 0; i < 8; ++i) vertices.push([i & 4 ? 1 : -1, i & 2 ? 2 : -2, i & 1 ? 3 : -3]);
  const sides = [[0, 1, 3, 2], [4, 6, 7, 5], [0, 4, 5, 1], [2, 3, 7, 6], [0, 2, 6, 4], [1, 5, 7, 3]];
  const faces = sides.flatMap(([a, b, c, d]) => [[a, b, c], [a, c, d]]);
  const node = {
    name: 'Box',
    objectTransform: [[mirrored ? -100 : 100, 0, 0], [0, 100, 0], [0, 0, 100], [0, 0, 0]],
    userProperties: drawn ? '' : 'notrendered',
    mesh: { vertices, faces, textureVertices: [[0.25, 0.75, 0]], textureFaces: faces.map(() => [0, 0, 0]) },
  };
  const scene = { format: 'mapexport-scene', version: 1, root: { name: 'Root', children: [node] } };
  writeFileSync(join(work, 'box.scene.json'), JSON.stringify(scene));
  const options = ['--coordinates', systems[system], '--texture-coordinates', textureModes[mode]];
  if (!expectCall([0], 'export', 'box.scene.json', 'box.kob', '--fresh', ...options)) return;
  if (!expectCall([0], 'convert', 'box.kob', 'box.glb', ...options)) return;
  let triangles = 0;
  for (const { indices, positions, normals, textures } of primitives('box.glb')) {
    for (let i = 0; i < indices.length; i += 3, ++triangles) {
      const corners = indices.slice(i, i + 3);
      const [a, b, c] = corners.map((index) => positions[index]);
      const outward = cross(subtract(b, a), subtract(c, a));
      if (!(dot(outward, a) > 0)) fault(`${what}: a triangle is wound clockwise`);
      if (a.some((value, axis) => Math.abs(Math.abs(value) - [1, 3, 2][axis]) > 1e-6)) {
        fault(`${what}: a corner is at ${a}`);
      }
      for (const index of normals ? corners : []) {
        if (dot(normals[index], outward) < 0.99 * Math.hypot(...outward)) {
          fault(`${what}: the normal ${normals[index]} is not outward`);
        }
        if (textures && (textures[index][0] !== 0.25 || textures[index][1] !== 0.25)) {
          fault(`${what}: texture coordinates ${textures[index]}`);
        }
      }
    }
  }
  if (triangles !== 12) fault(`${what}: ${triangles} triangles`);
  ++checked;
}

/** So many batches that those of one material become one primitive. */
async function checkManyBatches() {
  const vertices = [];
  const faces = [];
  for (let i = 0; i < 2200; ++i) {
    const [x, y] = [1000 * (i % 50), 1000 * Math.floor(i / 50)];
    vertices.push([x, y, 0], [x + 500, y, 0], [x, y + 500, i]);
    faces.push([3 * i, 3 * i + 1, 3 * i + 2, 1, i % 3]);
  }
  const materials = ['A', 'B', 'C'].map((name) => ({ class: 'standard', name }));
  materials.push({ class: 'multi', name: 'All', subMaterials: [0, 1, 2] });
  const scene = {
    format: 'mapexport-scene', version: 1, materials,
    root: { name: 'Root', children: [{ name: 'Many', material: 3, mesh: { vertices, faces } }] },
  };
  writeFileSync(join(work, 'many.scene.json'), JSON.stringify(scene));
  const options = ['--voxel-size', '900', '--no-weld'];
  if (!expectCall([0], 'export', 'many.scene.json', 'many.kob', '--fresh', ...options)) return;
  const { groups } = JSON.parse(expectCall([0], 'inspect', '--json', 'many.kob').output);
  if (!(groups[0].batches.length > 2000)) fault(`only ${groups[0].batches.length} batches`);
  if (!expectCall([0], 'convert', 'many.kob', 'many.glb')) return;
  const count = primitives('many.glb').length;
  if (count !== 3) fault(`many batches: ${count} primitives for 3 materials`);
  await checkScene(join(work, 'many.scene.json'), 'kob', options);
}

rmSync(work, { recursive: true, force: true });
mkdirSync(work, { recursive: true });
for (let system = 0; system < 4; ++system) {
  for (const mirrored of [false, true]) {
    for (const drawn of [false, true]) {
      checkOrientation(system, (system + (mirrored ? 1 : 3)) % 4, mirrored, drawn);
    }
  }
}
const golden = join(source, 'tests', 'golden');
for (const line of readFileSync(join(golden, 'cases.txt'), 'utf8').split('\n')) {
  if (!line || line.startsWith('#')) continue;
  // The database of transparent textures changes nothing that is looked at here.
  const [, name, , ...options] = line.replace(/--cxp \S+/, '').trim().split(/\s+/);
  const scene = join(golden, `${name}.scene.json`);
  for (const layout of ['qob', 'kob']) await checkScene(scene, layout, options);
}
for (const layout of ['qob', 'kob']) {
  await checkScene(join(source, 'examples', 'yard.scene.json'), layout, []);
  for (const format of ['3ds', 'ase', 'dae', 'fbx', 'gltf', 'obj']) {
    await checkScene(join(source, 'tests', 'models', `room.${format}`), layout, []);
  }
}
await checkScene(join(source, 'tests', 'blender', 'level.fbx'), 'kob', []);
await checkManyBatches();
console.log(`${checked} files checked, ${faults} faults`);
process.exit(faults === 0 && checked > 0 ? 0 : 1);
