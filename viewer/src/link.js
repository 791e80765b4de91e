// The state of the page as the part of its address behind "#", so that a link shows what its sender
// saw. First what is selected:
//   #material=3   #batch=12   #batch=12&face=7   #set=1   #group=2   #face=231&group=2 (of the face
//   table)
// then whatever differs from the first view:
//   &camera=X,Y,Z,YAW,PITCH,DISTANCE (in the file's units, and degrees)   &move=walk
//   &colour=batch   &show=edges,backs   &exported=2   &panel=off   &compare=a   &textures=off
//   &shading=off
//   &section=-z,250 (the side above; without "-" that below)   &figure=X,Y,Z   &measure=X,Y,Z,X,Y,Z
import { coordinateSystem, filePoint, placePoint } from './coordinates.js';

const kDegree = Math.PI / 180;

/** The selection that the address asks for; null when the model does not have it. */
function choiceOf(asked, model, materials, faces) {
  const number = (name) =>
    /^-?\d{1,9}$/.test(asked.get(name) ?? '') ? Number(asked.get(name)) : null;
  const find = (kind, list) => {
    const thing = list.find((entry) => entry.id === number(kind));
    return thing ? { kind, thing } : null;
  };
  const face = number('face');
  if (face === null) {
    return (
      find('material', materials) ??
      find('batch', model.batches) ??
      find('set', model.sets) ??
      find('group', model.groups)
    );
  }
  const batch = number('batch');
  if (batch !== null) {
    const { drawn } = faces;
    const entry = drawn.batch.findIndex((owner, i) => owner === batch && drawn.face[i] === face);
    return entry < 0 ? null : { kind: 'face', faceKind: 'drawn', entry };
  }
  for (const [faceKind, own] of Object.entries(faces)) {
    const group = number('group') ?? 0;
    const entry = own.table.findIndex((row, i) => row === face && own.group[i] === group);
    if (entry >= 0) return { kind: 'face', faceKind, entry };
  }
  return null;
}

/** `text` as `count` finite numbers; null when it is something else. */
function numbersOf(text, count) {
  const list = (text ?? '').split(',').map((part) => (part.trim() ? Number(part) : NaN));
  return list.length === count && list.every(Number.isFinite) ? list : null;
}

function cameraOf(text, frame, system) {
  const numbers = numbersOf(text, 6);
  if (!numbers) return null;
  const position = [0, 0, 0];
  placePoint(coordinateSystem(system), frame, numbers, 0, position, 0);
  const [yaw, pitch] = numbers.slice(3, 5).map((angle) => angle * kDegree);
  return position.some(Number.isNaN)
    ? null
    : { position, yaw, pitch, distance: numbers[5] * frame.scale };
}

function textOfCamera({ position, yaw, pitch, distance }, frame, system) {
  const turned = yaw - 2 * Math.PI * Math.floor(yaw / (2 * Math.PI));
  return [
    ...filePoint(coordinateSystem(system), frame, position),
    turned / kDegree,
    pitch / kDegree,
    distance / frame.scale,
  ]
    .map((value) => `${Number(value.toPrecision(6))}`)
    .join();
}

/** One or two points, three numbers each; null for anything else. */
function pointsOf(text) {
  const numbers = numbersOf(text, 6) ?? numbersOf(text, 3);
  return numbers && [numbers.slice(0, 3), numbers.slice(3)].filter((point) => point.length > 0);
}

/** The section plane of "z,250", or of "-z,250", which is flipped. */
function sectionOf(text) {
  const [, sign, name, number] = /^(-?)([xyz]),(.+)$/.exec(text ?? '') ?? [];
  const at = numbersOf(number, 1);
  return at && { axis: 'xyz'.indexOf(name), flipped: sign === '-', at: at[0] };
}

/**
 * What an address asks for: `choice`, `camera` (as CameraRig.place), `mode`, `colouring`, `parts`
 * (an array), `system`, `panel`, `compare`, `textures`, `shading`, `tools` (as Tools.link takes
 * it); null, or the first view's, where it asks for nothing.
 */
export function readLink(hash, { model, materials, faces, frame }) {
  const asked = new URLSearchParams(hash.replace(/^#/, ''));
  const system = /^[0-3]$/.test(asked.get('exported') ?? '')
    ? Number(asked.get('exported'))
    : model.coordinateSystem;
  return {
    choice: choiceOf(asked, model, materials, faces),
    camera: cameraOf(asked.get('camera'), frame, system),
    mode: asked.get('move') === 'walk' ? 'walk' : 'orbit',
    colouring: asked.get('colour'),
    parts: (asked.get('show') ?? '').split(','),
    system,
    panel: asked.get('panel') !== 'off',
    compare: asked.get('compare'),
    textures: asked.get('textures') !== 'off',
    shading: asked.get('shading') !== 'off',
    tools: {
      section: sectionOf(asked.get('section')),
      figure: numbersOf(asked.get('figure'), 3),
      measure: pointsOf(asked.get('measure')),
    },
  };
}

function partsOfChoice(choice, faces) {
  if (!choice) return [];
  if (choice.kind !== 'face') return [[choice.kind, choice.thing.id]];
  const own = faces[choice.faceKind];
  const { entry } = choice;
  if (own.table[entry] < 0) {
    return [
      ['batch', own.batch[entry]],
      ['face', own.face[entry]],
    ];
  }
  return [
    ['face', own.table[entry]],
    ['group', own.group[entry] || null],
  ];
}

/** The address of a state as readLink gives it; empty for the first view, which is `first`. */
export function writeLink(state, first, { faces, frame }) {
  const changed = (name) => (state[name] === first[name] ? null : state[name]);
  const parts = [
    ...partsOfChoice(state.choice, faces),
    ['camera', state.camera && textOfCamera(state.camera, frame, state.system)],
    ['move', changed('mode')],
    ['colour', changed('colouring')],
    ['show', state.parts.join() || null],
    ['exported', changed('system')],
    ['compare', changed('compare')],
    ['panel', state.panel ? null : 'off'],
    ['textures', state.textures ? null : 'off'],
    ['shading', state.shading ? null : 'off'],
    ...Object.entries(state.tools ?? {}),
  ].filter(([, value]) => value !== null);
  return parts.length > 0 ? `#${parts.map((pair) => pair.join('=')).join('&')}` : '';
}
