// Finds the triangles of a model in the file: drawn ones and those that only collide.
import { changesOf } from './compare.js';

/** The index in the face table of each drawn face of a group, by batch and position. */
function tableOfDrawn(group) {
  const { faceCount, shorts, words } = group.faces;
  const table = group.batches.map((batch) => new Int32Array(batch.faceCount).fill(-1));
  for (let face = 0; face < faceCount; ++face) {
    const list = table[words[4 * face + 3]];
    if (!list) continue;
    // Positions have 16 bits: in a longer batch, take the next free face with the same low bits.
    let position = shorts[8 * face + 3];
    while (position < list.length && list[position] !== -1) position += 65536;
    if (position < list.length) list[position] = face;
  }
  return table;
}

/**
 * The drawn and undrawn faces of the model, without coordinates: parallel arrays with one entry per
 * face. `batch` and `set` are indices into the model's flat lists, -1 for none; `face` is the index
 * in the batch, for an undrawn face the index among the group's planes; `table` is the index in the
 * group's face table, -1 without one. `change` is what a comparison says of the face.
 */
export function listFaces(model) {
  const count = (lists) => lists.reduce((sum, list) => sum + list, 0);
  const drawnCount = count(model.batches.map((batch) => batch.faceCount));
  const undrawnCount = count(model.groups.map((group) => group.planes.length / 4));
  const make = (length) => ({
    count: length,
    group: new Uint32Array(length),
    batch: new Int32Array(length).fill(-1),
    face: new Uint32Array(length),
    table: new Int32Array(length).fill(-1),
    set: new Int32Array(length).fill(-1),
  });
  const drawn = make(drawnCount);
  const undrawn = make(undrawnCount);

  let firstBatch = 0;
  let firstSet = 0;
  let at = 0;
  let undrawnAt = 0;
  model.groups.forEach((group, groupIndex) => {
    const table = model.hasFaceTable ? tableOfDrawn(group) : null;
    group.batches.forEach((batch, batchIndex) => {
      for (let face = 0; face < batch.faceCount; ++face, ++at) {
        drawn.group[at] = groupIndex;
        drawn.batch[at] = firstBatch + batchIndex;
        drawn.face[at] = face;
        const row = table ? table[batchIndex][face] : -1;
        drawn.table[at] = row;
        if (row >= 0) drawn.set[at] = firstSet + group.faces.words[4 * row + 2];
      }
    });
    for (let row = 0, plane = 0; row < group.faces.faceCount; ++row) {
      if (group.faces.words[4 * row + 3] !== -1) continue;
      undrawn.group[undrawnAt] = groupIndex;
      undrawn.face[undrawnAt] = plane++;
      undrawn.table[undrawnAt] = row;
      undrawn.set[undrawnAt++] = firstSet + group.faces.words[4 * row + 2];
    }
    firstBatch += group.batches.length;
    firstSet += group.sets.length;
  });
  if (model.comparison) {
    drawn.firstOfB = model.comparison.sides[0].drawn.length;
    drawn.change = changesOf(model.comparison, 'drawn');
    undrawn.change = changesOf(model.comparison, 'undrawn');
  }
  return { drawn, undrawn };
}

/** The indices of a face's three vertices, and of its corners when it is drawn. */
export function cornersOf(model, kind, faces, entry) {
  if (kind === 'undrawn') {
    const { shorts } = model.groups[faces.group[entry]].faces;
    return {
      vertices: Array.from(shorts.subarray(8 * faces.table[entry], 8 * faces.table[entry] + 3)),
    };
  }
  const { indices } = model.batches[faces.batch[entry]];
  const at = 6 * faces.face[entry];
  return {
    vertices: Array.from(indices.subarray(at, at + 3)),
    corners: Array.from(indices.subarray(at + 3, at + 6)),
  };
}

/** The plane of a face as stored: normal and d. */
export function planeOf(model, kind, faces, entry) {
  const { planes } =
    kind === 'undrawn' ? model.groups[faces.group[entry]] : model.batches[faces.batch[entry]];
  return planes.subarray(4 * faces.face[entry], 4 * faces.face[entry] + 4);
}

/** The list that a face's vertex indices point into. */
export function pointsOf(model, kind, faces, entry) {
  const group = model.groups[faces.group[entry]];
  return kind === 'undrawn' ? group.points : group.vertices;
}

/** The entries of all drawn and undrawn faces that belong to the selection. */
export function entriesOf(model, faces, choice) {
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
