// The text about the selection.
import { keywordsOf } from './colours.js';
import { cornersOf, planeOf, pointsOf } from './faces.js';
import { limitsOfGroup, shareOf } from './limits.js';
import { materialName, trianglesOf } from './tables.js';
import { countedAs, element, named, point, rounded, visible } from './text.js';

/** A <dl>; rows without a value are left out. */
function list(rows) {
  const made = element('dl');
  for (const [term, value] of rows) {
    if (value !== null) made.append(element('dt', {}, term), element('dd', {}, value));
  }
  return made;
}

const flagWords = (model, set) => keywordsOf(model, set.flags).join(', ') || 'no flags';

/** A button that selects the thing that it names. */
function link(text, choose) {
  return element('button', { type: 'button', onclick: choose }, text);
}

function faceDetails(model, faces, { faceKind, entry }, choose) {
  const own = faces[faceKind];
  const plane = planeOf(model, faceKind, own, entry);
  const { vertices } = cornersOf(model, faceKind, own, entry);
  const points = pointsOf(model, faceKind, own, entry);
  const batch = model.batches[own.batch[entry]] ?? null;
  const set = model.sets[own.set[entry]] ?? null;
  const group = model.groups[own.group[entry]];
  const material = batch && (model.materials[batch.material] ?? { id: -1 });
  return list([
    ['Face', batch ? `${own.face[entry]} of batch ${batch.label}` : 'not drawn, collision only'],
    ['Place', own.table[entry] >= 0 ? `${own.table[entry]} of the face table` : null],
    ['Material', material && link(materialName(material), () => choose('material', material))],
    [
      'Texture',
      material && material.id >= 0 && material.textureName !== 'NULL'
        ? visible(material.textureName)
        : null,
    ],
    ['Batch', batch && link(batch.label, () => choose('batch', batch))],
    [
      'Set',
      set &&
        link(set.name === 'NONE' ? set.label : `${set.label} ${visible(set.name)}`, () =>
          choose('set', set),
        ),
    ],
    ['Flags', set && flagWords(model, set)],
    [
      'Group',
      model.groups.length > 1 ? link(visible(group.name), () => choose('group', group)) : null,
    ],
    ['Normal', point(plane.subarray(0, 3))],
    ['Plane d', rounded(plane[3])],
    ...vertices.map((index) => [
      `${batch ? 'Vertex' : 'Point'} ${index}`,
      point(points.subarray(3 * index, 3 * index + 3)),
    ]),
  ]);
}

function materialDetails(model, material) {
  if (material.id < 0) {
    return list([
      ['Material', 'none'],
      ['Triangles', countedAs(material.triangles, 'triangle', 'triangles')],
    ]);
  }
  return list([
    ['Material', named(material.name)],
    ['Texture', material.textureName === 'NULL' ? 'none' : visible(material.textureName)],
    [
      'Picture',
      model.textures && material.textureName !== 'NULL'
        ? model.textureOf[material.id] < 0
          ? 'none'
          : 'shown'
        : null,
    ],
    ['Drawn', countedAs(material.triangles, 'triangle', 'triangles')],
    ['Two-sided', material.twoSided ? 'yes' : 'no'],
    ['Diffuse', point(material.diffuse)],
    ['Ambient', point(material.ambient)],
    ['Specular', point(material.specular)],
    ['Scalars', material.scalars.map(rounded).join(', ')],
    ['Mode', String(material.modeValue)],
  ]);
}

function batchDetails(model, batch, choose) {
  const material = model.materials[batch.material] ?? { id: -1 };
  return list([
    ['Batch', batch.label],
    ['Material', link(materialName(material), () => choose('material', material))],
    [
      'Holds',
      `${countedAs(batch.faceCount, 'triangle', 'triangles')}, ${countedAs(
        batch.cornerCount,
        'corner',
        'corners',
      )}`,
    ],
  ]);
}

function setDetails(model, set) {
  return list([
    ['Set', set.label],
    ['Name', set.name === 'NONE' ? 'none' : named(set.name)],
    ['Flags', flagWords(model, set)],
    ['Holds', countedAs(set.faceCount, 'face', 'faces')],
  ]);
}

function groupDetails(model, group) {
  return list([
    ['Group', named(group.name)],
    ['Drawn', countedAs(trianglesOf(group), 'triangle', 'triangles')],
    ...limitsOfGroup(model, group).map(({ name, count }) => [name, shareOf(model, count)]),
  ]);
}

/** The details of `choice`, null for none; its links call `choose(kind, thing)`. */
export function detailsOf(model, faces, choice, choose) {
  switch (choice?.kind) {
    case 'face':
      return faceDetails(model, faces, choice, choose);
    case 'material':
      return materialDetails(model, choice.thing);
    case 'batch':
      return batchDetails(model, choice.thing, choose);
    case 'set':
      return setDetails(model, choice.thing);
    case 'group':
      return groupDetails(model, choice.thing);
    default:
      return element('p', {}, 'Click a face in the picture, or a row of a table.');
  }
}

/** The same in one line. */
export function lineOf(model, faces, choice) {
  switch (choice?.kind) {
    case 'face': {
      const own = faces[choice.faceKind];
      const batch = model.batches[own.batch[choice.entry]];
      const set = model.sets[own.set[choice.entry]];
      const material = batch && materialName(model.materials[batch.material]);
      const start = batch
        ? `Face ${own.face[choice.entry]} of batch ${batch.label}, ${material}`
        : `Collision face ${own.table[choice.entry]}`;
      return set && set.flags ? `${start}; ${flagWords(model, set)}` : start;
    }
    case 'material':
      return `Material: ${materialName(choice.thing)}`;
    case 'batch':
      return `Batch ${choice.thing.label}`;
    case 'set': {
      const name = choice.thing.name === 'NONE' ? '' : ` ${visible(choice.thing.name)}`;
      return `Surface set ${choice.thing.label}${name}: ${flagWords(model, choice.thing)}`;
    }
    case 'group':
      return `Group: ${visible(choice.thing.name)}`;
    default:
      return '';
  }
}
