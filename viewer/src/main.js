// The page of a model: reads the block and connects picture, tables and controls.
import { Vector3 } from 'three';

import { CameraRig } from './camera.js';
import { colouringsOf, firstColouring, swatchOf } from './colours.js';
import { makeControls } from './controls.js';
import { frameOf } from './coordinates.js';
import { detailsOf, lineOf } from './details.js';
import { listFaces } from './faces.js';
import { legendOf } from './legend.js';
import { limitBars, limitsOf } from './limits.js';
import { readLink, writeLink } from './link.js';
import { Navigation } from './navigation.js';
import { pick } from './pick.js';
import { decodeBase64, readModel } from './readModel.js';
import { LevelScene } from './scene.js';
import { boxOf, cornersOfBox, middleOf, normalOf } from './shapes.js';
import { makeTables, materialsOf } from './tables.js';
import { counted, countedAs, element, visible } from './text.js';

const find = (id) => document.getElementById(id);

const source = find('model');
const model = readModel(decodeBase64(source.textContent));
source.remove();
const faces = listFaces(model);
const materials = materialsOf(model);
const frame = frameOf(model);
const colourings = colouringsOf(model);

// What the first view has, unless the address asks for something else.
const first = {
  colouring: firstColouring(model),
  mode: 'orbit',
  system: model.coordinateSystem,
};
const state = {
  colouring: null,
  mode: first.mode,
  system: first.system,
  panel: true,
  moved: false, // whether the camera is away from the view of the whole level
  parts: { undrawn: false, planes: false, edges: false, backs: false, only: false },
  choice: null,
};

function showHeader() {
  document.title = visible(model.fileName);
  find('name').textContent = visible(model.fileName);
  const vertices = model.groups.reduce((sum, group) => sum + group.vertices.length / 3, 0);
  find('summary').textContent = [
    model.hasFaceTable ? 'kob' : 'qob',
    countedAs(vertices, 'vertex', 'vertices'),
    countedAs(faces.drawn.count, 'triangle', 'triangles'),
    countedAs(model.batches.length, 'batch', 'batches'),
    countedAs(model.materials.length, 'material', 'materials'),
    ...(model.hasFaceTable
      ? [countedAs(faces.undrawn.count, 'collision-only face', 'collision-only faces')]
      : []),
    ...(model.groups.length === 1 ? [] : [countedAs(model.groups.length, 'group', 'groups')]),
  ].join(' · ');
}

function showWarnings(hidden) {
  const lines = limitsOf(model)
    .filter(({ count }) => count > model.indexLimit)
    .map(
      ({ name, count, trouble }) =>
        `${name}: ${counted(count)} are more than the ${counted(model.indexLimit)} that the ` +
        `file's 16-bit indices can address: ${trouble}.`,
    );
  if (hidden > 0) {
    lines.push(
      `${countedAs(hidden, 'face is', 'faces are')} not shown: ` +
        'positions are not finite numbers, or lie too far off.',
    );
  }
  if (frame.outliers)
    lines.push('A few points lie far away from all others; the view shows where most are.');
  find('warnings').replaceChildren(...lines.map((line) => element('li', {}, line)));
  find('warnings').hidden = lines.length === 0;
}

/** The entries of all drawn and undrawn faces that belong to the selection. */
function entriesOf(choice) {
  const none = { drawn: [], undrawn: [] };
  if (!choice) return none;
  if (choice.kind === 'face') return { ...none, [choice.faceKind]: [choice.entry] };
  const { drawn, undrawn } = faces;
  const where = (own, belongs) => {
    const entries = [];
    for (let entry = 0; entry < own.count; ++entry) if (belongs(entry)) entries.push(entry);
    return entries;
  };
  const { id } = choice.thing;
  if (choice.kind === 'set' || choice.kind === 'group') {
    const own = (list) => where(list, (entry) => list[choice.kind][entry] === id);
    return { drawn: own(drawn), undrawn: own(undrawn) };
  }
  if (choice.kind === 'batch')
    return { ...none, drawn: where(drawn, (entry) => drawn.batch[entry] === id) };
  return {
    ...none,
    drawn: where(drawn, (entry) => model.batches[drawn.batch[entry]].material === id),
  };
}

const rig = new CameraRig();
let scene = null;
try {
  scene = new LevelScene(find('view'), model, faces, frame, rig);
} catch (error) {
  find('message').textContent = `Only the tables can be shown, not the 3D view: ${error.message}`;
  find('message').hidden = false;
}

const tables = makeTables(model, materials, (kind, thing) => choose({ kind, thing }));
find('tables').append(...Object.values(tables).map((table) => table.root));
find('search').oninput = () => {
  const words = find('search').value.toLowerCase().split(/\s+/).filter(Boolean);
  const found = Object.values(tables).reduce((sum, table) => sum + table.search(words), 0);
  find('found').textContent = words.length > 0 ? `${countedAs(found, 'row', 'rows')} found` : '';
};
find('search').onkeydown = ({ key }) => {
  if (key === 'Escape' && find('search').value === '') find('search').blur();
};

/** Selects `choice` in the picture, the tables, the details and the address. */
function choose(choice) {
  const same = choice && choice.kind !== 'face' && state.choice?.thing === choice.thing;
  state.choice = same ? null : choice; // a second click on a row deselects it
  const now = state.choice;
  const ofFace = { material: null, batch: null, set: null, group: null };
  if (now?.kind === 'face') {
    const own = faces[now.faceKind];
    if (now.faceKind === 'drawn') {
      ofFace.batch = own.batch[now.entry];
      ofFace.material = model.batches[ofFace.batch].material;
    }
    ofFace.set = own.set[now.entry];
    ofFace.group = own.group[now.entry];
  }
  for (const [kind, table] of Object.entries(tables)) {
    table.mark(now?.kind === kind ? now.thing.id : null, ofFace[kind]);
  }
  find('chosen').replaceChildren(
    detailsOf(model, faces, now, (kind, thing) => choose({ kind, thing })),
  );
  find('status').textContent = lineOf(model, faces, now);
  controls.enableChosen(Boolean(now));
  showChosen();
  link();
}

let hash = location.hash; // as last read or written
let linking = 0;

/** Writes the state into the address, soon: browsers limit how often it may change. */
function link() {
  clearTimeout(linking);
  linking = setTimeout(() => {
    if (location.hash !== hash) return; // somebody asked for another one, which comes first
    const camera = scene && (state.moved || state.choice) ? rig.place : null;
    const parts = Object.keys(state.parts).filter((id) => state.parts[id]);
    hash = writeLink({ ...state, camera, parts }, first, { faces, frame });
    // Some archives open pages with an address that can't be changed.
    try {
      history.replaceState(null, '', hash || location.pathname + location.search);
    } catch {
      /* so be it */
    }
    hash = location.hash;
  }, 150);
}

/** Draws after a change of the camera. */
function moved() {
  state.moved = true;
  scene.draw();
  link();
}

function showChosen() {
  const { drawn, undrawn } = entriesOf(state.choice);
  scene?.setChosen(drawn, undrawn, state.parts.only && Boolean(state.choice));
}

function goToChosen() {
  if (!scene || !state.choice) return;
  const entries = entriesOf(state.choice);
  const box = boxOf(scene.meshes.drawn, entries.drawn).union(
    boxOf(scene.meshes.undrawn, entries.undrawn),
  );
  if (box.isEmpty()) return;
  let direction = null;
  if (state.choice.kind === 'face') {
    const { faceKind, entry } = state.choice;
    const normal = normalOf(scene.meshes[faceKind], entry);
    if (normal.lengthSq() > 0.5) direction = normal;
    const middle = middleOf(scene.meshes[faceKind], entry);
    const reach = Math.max(0.02, ...box.max.clone().sub(box.min).toArray());
    box.setFromCenterAndSize(middle, new Vector3(reach, reach, reach).multiplyScalar(1.6));
  }
  rig.frame([cornersOfBox(box)], direction);
  moved();
}

/** Selects the first visible face at a place of the picture, each coordinate from -1 to 1. */
function chooseAt(x, y) {
  const [origin, direction] = scene.ray(x, y);
  const hits = [
    { faceKind: 'drawn', hit: pick(scene.meshes.drawn, origin, direction, state.parts.backs) },
  ];
  if (state.parts.undrawn) {
    hits.push({ faceKind: 'undrawn', hit: pick(scene.meshes.undrawn, origin, direction, true) });
  }
  const first = hits.filter(({ hit }) => hit).sort((a, b) => a.hit.distance - b.hit.distance)[0];
  choose(first ? { kind: 'face', faceKind: first.faceKind, entry: first.hit.entry } : null);
}

// The height of a person's eyes if the file counts in centimetres, limited by the size of the
// level.
const eyeHeight = Math.min(8, Math.max(1.5, 170 * frame.scale));

/** If there is a floor in the middle of the picture, walks on it. */
function standOnFloor() {
  const [origin, direction] = scene.ray(0, 0);
  const hit = pick(scene.meshes.drawn, origin, direction, false);
  if (!hit) return;
  const normal = normalOf(scene.meshes.drawn, hit.entry);
  if (normal.y < 0.5) return;
  rig.stand(
    new Vector3(...direction)
      .multiplyScalar(hit.distance)
      .add(new Vector3(...origin))
      .add(new Vector3(0, eyeHeight, 0)),
  );
  moved();
}

const chooseThing = (kind, thing) => choose({ kind, thing });

const controls = makeControls(model, faces.undrawn.count > 0, colourings, {
  colouring: (id) => {
    state.colouring = id;
    scene?.setColouring(id);
    for (const [kind, table] of Object.entries(tables)) {
      table.setSwatches((thing) => swatchOf(model, id, kind, thing));
    }
    find('legend').replaceChildren(...legendOf(model, materials, faces, id, chooseThing));
    link();
  },
  mode: (id) => {
    if (scene && id === 'walk' && rig.mode !== 'walk') standOnFloor();
    rig.mode = state.mode = id;
    find('stage').classList.toggle('walking', id === 'walk');
    link();
  },
  part: (id, on) => {
    state.parts[id] = on;
    scene?.setParts(state.parts);
    if (id === 'only') showChosen();
    link();
  },
  system: (id) => {
    state.system = Number(id);
    scene?.setSystem(state.system);
    showChosen();
    frameAll();
  },
  panel: (on) => {
    state.panel = on;
    find('panel').hidden = !on;
    link();
  },
  frameAll,
  goToChosen,
  clear: () => choose(null),
});

function frameAll() {
  if (!scene) return;
  rig.reset(scene.points());
  scene.draw();
  state.moved = false;
  link();
}

function resize() {
  const { clientWidth, clientHeight } = find('stage');
  scene.resize(clientWidth, clientHeight);
  if (!state.moved) rig.frame(scene.points());
}

/** Shows what the address asks for. */
function follow() {
  hash = location.hash;
  const asked = readLink(hash, { model, materials, faces, frame });
  const set = (kind, id) => state[kind] !== id && controls.set(kind, id);
  const known = colourings.some(({ id }) => id === asked.colouring);
  if (asked.panel !== state.panel) controls.press('h');
  set('system', asked.system);
  set('colouring', known ? asked.colouring : first.colouring);
  const isOnlyUndrawn =
    faces.undrawn.count > 0 &&
    (faces.drawn.count === 0 || asked.choice?.faceKind === 'undrawn');
  for (const id of Object.keys(state.parts)) {
    const on = asked.parts.includes(id) || (id === 'undrawn' && isOnlyUndrawn);
    if (state.parts[id] !== on) controls.set('part', id, on);
  }
  frameAll();
  set('mode', asked.mode);
  state.choice = null;
  choose(asked.choice);
  if (!asked.camera) {
    goToChosen();
  } else if (scene) {
    rig.place = asked.camera;
    moved();
  }
}

function followScheme() {
  const style = getComputedStyle(document.documentElement);
  scene?.setBackground(
    style.getPropertyValue('--sky').trim(),
    style.getPropertyValue('--edges').trim(),
  );
}

function begin() {
  showHeader();
  find('limits').append(...limitBars(model));
  let hidden = 0;
  if (scene) {
    scene.setSystem(state.system);
    for (const mesh of Object.values(scene.meshes))
      hidden += mesh.shown.reduce((sum, is) => sum + 1 - is, 0);
    resize();
    new ResizeObserver(resize).observe(find('stage'));
    new Navigation(find('view'), rig, {
      moved,
      clicked: chooseAt,
      keyed: (key) => {
        if (key === 'Enter' || key === ' ') chooseAt(0, 0);
        return key === 'Enter' || key === ' ' || controls.press(key);
      },
    });
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', followScheme);
    followScheme();
  }
  showWarnings(hidden);
  if (scene && faces.drawn.count + faces.undrawn.count === 0) {
    find('message').textContent = 'The model has no faces.';
    find('message').hidden = false;
  }
  controls.set('mode', first.mode);
  window.addEventListener('hashchange', follow);
  follow();
}

begin();
