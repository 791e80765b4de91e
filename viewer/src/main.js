// The page of a model: reads the block and connects picture, tables and controls.
import { Vector3 } from 'three';

import { CameraRig } from './camera.js';
import { colouringsOf, firstColouring, swatchOf } from './colours.js';
import { differenceOf, kShown, onlyCollisionDiffers } from './compare.js';
import { makeControls } from './controls.js';
import { frameOf } from './coordinates.js';
import { detailsOf, lineOf } from './details.js';
import { entriesOf, listFaces } from './faces.js';
import { showHeader, showWarnings } from './header.js';
import { legendOf } from './legend.js';
import { limitBars } from './limits.js';
import { readLink, writeLink } from './link.js';
import { Navigation } from './navigation.js';
import { pick } from './pick.js';
import { decodeBase64, readModel } from './readModel.js';
import { LevelScene } from './scene.js';
import { boxOf, cornersAt, cornersOfBox, middleOf, normalOf } from './shapes.js';
import { makeTables, materialsOf } from './tables.js';
import { countedAs } from './text.js';
import { Tools } from './tools.js';

const kSnapPixels = 10;

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
  compare: 'both',
};
const state = {
  colouring: null,
  mode: first.mode,
  system: first.system,
  compare: first.compare,
  panel: true,
  moved: false, // whether the camera is away from the view of the whole level
  parts: {
    undrawn: false,
    planes: false,
    edges: false,
    backs: false,
    only: false,
    measure: false,
    section: false,
    grid: false,
    axes: false,
    figure: false,
    textures: false,
    shading: false,
  },
  choice: null,
};

const rig = new CameraRig();
let scene = null;
try {
  scene = new LevelScene(find('view'), model, faces, frame, rig);
} catch (error) {
  find('message').textContent = `Only the tables can be shown, not the 3D view: ${error.message}`;
  find('message').hidden = false;
}

const tools = scene && new Tools(scene, frame, () => link());
if (scene) scene.drawn = (camera) => tools.showAxes(camera);

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
    // Shading, and textures where there are any, are on at first; all others are off.
    const { shading, ...others } = state.parts;
    const textures = others.textures || !model.textures?.length;
    const parts = Object.keys(others).filter((id) => others[id] && id !== 'textures');
    const now = { ...state, camera, parts, textures, shading, tools: tools?.link };
    hash = writeLink(now, first, { faces, frame });
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
  if (!scene) return;
  const { drawn, undrawn } = entriesOf(model, faces, state.choice);
  // Where both models are shown, what they share is drawn once, but belongs to both.
  const list = state.compare === first.compare ? 'shown' : 'visible';
  const isShown = (kind) => (entry) => scene.meshes[kind][list][entry];
  scene.setChosen(
    drawn.filter(isShown('drawn')),
    undrawn.filter(isShown('undrawn')),
    state.parts.only && Boolean(state.choice),
  );
}

function goToChosen() {
  if (!scene || !state.choice) return;
  const entries = entriesOf(model, faces, state.choice);
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

/**
 * The first visible face at a place of the picture, each coordinate from -1 to 1: its kind, entry,
 * normal and the point; null for none.
 */
function faceAt(x, y) {
  const [origin, direction] = scene.ray(x, y);
  const range = scene.rangeOf(origin, direction);
  const kinds = state.parts.undrawn ? ['drawn', 'undrawn'] : ['drawn'];
  const hits = kinds.flatMap((faceKind) => {
    const backs = faceKind === 'undrawn' || state.parts.backs;
    const hit = pick(scene.meshes[faceKind], origin, direction, backs, range);
    return hit ? [{ faceKind, ...hit }] : [];
  });
  const [nearest] = hits.sort((a, b) => a.distance - b.distance);
  if (!nearest) return null;
  const { faceKind, entry, distance } = nearest;
  const point = new Vector3(...origin).addScaledVector(new Vector3(...direction), distance);
  return { faceKind, entry, point, normal: normalOf(scene.meshes[faceKind], entry) };
}

/** Selects the face at a place of the picture, or measures from it, or from a corner close by. */
function clickAt(x, y) {
  const face = faceAt(x, y);
  if (!state.parts.measure) {
    choose(face && { kind: 'face', faceKind: face.faceKind, entry: face.entry });
    return;
  }
  if (!face) return;
  const away = (corner) => scene.pixelsFrom(corner, x, y);
  const corners = cornersAt(scene.meshes[face.faceKind], face.entry);
  const [corner] = corners.sort((a, b) => away(a) - away(b));
  tools.take((away(corner) < kSnapPixels ? corner : face.point).toArray());
}

/** Where a figure stands: in the middle of the picture, or else of the level. */
function spotOfFigure() {
  const face = faceAt(0, 0);
  if (face && face.normal.y > 0.5) return face.point.toArray();
  const { x, z } = scene.box.getCenter(new Vector3());
  return [x, scene.box.min.y, z];
}

// The height of a person's eyes if the file counts in centimetres, limited by the size of the
// level.
const eyeHeight = Math.min(8, Math.max(1.5, 170 * frame.scale));

/** If there is a floor in the middle of the picture, walks on it. */
function standOnFloor() {
  const face = faceAt(0, 0);
  if (!face || face.normal.y < 0.5) return;
  rig.stand(face.point.add(new Vector3(0, eyeHeight, 0)));
  moved();
}

const chooseThing = (kind, thing) => choose({ kind, thing });

const controls = makeControls(model, faces.undrawn.count > 0, colourings, {
  compare: (id) => {
    state.compare = id;
    scene?.setShown(kShown.find((each) => each.id === id).changes);
    showChosen();
    link();
  },
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
    tools?.setParts(state.parts, spotOfFigure);
    if (id === 'only') showChosen();
    link();
  },
  system: (id) => {
    state.system = Number(id);
    scene?.setSystem(state.system);
    tools?.setSystem(state.system);
    tools?.setParts(state.parts, spotOfFigure);
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
  clear: () => (state.parts.measure ? controls.set('part', 'measure', false) : choose(null)),
});

/** Shows the whole level, or in a comparison the part that is chosen there. */
function frameAll() {
  if (!scene) return;
  const isPart = state.compare !== first.compare;
  rig.reset(scene.points(isPart));
  scene.draw();
  state.moved = isPart;
  link();
}

let size = '';

function resize() {
  const { clientWidth, clientHeight } = find('stage');
  if (size === `${clientWidth} ${clientHeight}`) return;
  scene.resize(clientWidth, clientHeight);
  if (size && !state.moved) rig.frame(scene.points());
  size = `${clientWidth} ${clientHeight}`;
}

/** Shows what the address asks for. */
function follow() {
  hash = location.hash;
  const asked = readLink(hash, { model, materials, faces, frame });
  const set = (kind, id) => state[kind] !== id && controls.set(kind, id);
  const known = colourings.some(({ id }) => id === asked.colouring);
  if (asked.panel !== state.panel) controls.press('h');
  set('system', asked.system);
  if (model.comparison) set('compare', first.compare);
  set('colouring', known ? asked.colouring : first.colouring);
  const isOnlyUndrawn =
    faces.undrawn.count > 0 &&
    (faces.drawn.count === 0 ||
      asked.choice?.faceKind === 'undrawn' ||
      onlyCollisionDiffers(faces));
  for (const id of Object.keys(state.parts)) {
    const on =
      id === 'textures' || id === 'shading'
        ? asked[id] && (id === 'shading' || model.textures?.length > 0)
        : asked.parts.includes(id) || (id === 'undrawn' && isOnlyUndrawn);
    if (state.parts[id] !== on) controls.set('part', id, on);
  }
  frameAll();
  if (model.comparison && kShown.some(({ id }) => id === asked.compare))
    set('compare', asked.compare);
  set('mode', asked.mode);
  state.choice = null;
  choose(asked.choice);
  if (!asked.camera) {
    goToChosen();
  } else if (scene) {
    rig.place = asked.camera;
    moved();
  }
  if (tools) tools.link = asked.tools;
}

function followScheme() {
  const style = getComputedStyle(document.documentElement);
  scene?.setBackground(
    style.getPropertyValue('--sky').trim(),
    style.getPropertyValue('--edges').trim(),
  );
}

function begin() {
  showHeader(model, faces);
  if (model.comparison) {
    find('difference').hidden = false;
    find('difference').append(...differenceOf(model.comparison));
  }
  find('limits').append(...limitBars(model));
  let hidden = 0;
  if (scene) {
    scene.setSystem(state.system);
    tools.setSystem(state.system);
    for (const mesh of Object.values(scene.meshes))
      hidden += mesh.shown.reduce((sum, is) => sum + 1 - is, 0);
    resize();
    new ResizeObserver(resize).observe(find('stage'));
    new Navigation(find('view'), rig, {
      moved,
      clicked: clickAt,
      keyed: (key) => {
        if (key === 'Enter' || key === ' ') clickAt(0, 0);
        return key === 'Enter' || key === ' ' || controls.press(key);
      },
    });
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', followScheme);
    followScheme();
  }
  showWarnings(model, frame, hidden);
  if (scene && faces.drawn.count + faces.undrawn.count === 0) {
    find('message').textContent = 'The model has no faces.';
    find('message').hidden = false;
  }
  if (model.comparison) controls.set('compare', first.compare);
  controls.set('mode', first.mode);
  window.addEventListener('hashchange', follow);
  follow();
}

begin();
