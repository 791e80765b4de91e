// The triangles of a model as long lists for drawing: three entries a face, no vertex shared.
import { coordinateSystem, placePoint } from './coordinates.js';

/** For each table face of a group that is drawn, under its batch and place there: the table's index. */
function tableOfDrawn(group) {
  const { faceCount, shorts, words } = group.faces;
  const table = group.batches.map((batch) => new Int32Array(batch.faceCount).fill(-1));
  for (let face = 0; face < faceCount; ++face) {
    const list = table[words[4 * face + 3]];
    if (!list) continue;
    // Positions have 16 bits: in a longer batch the next free one of the same low bits is meant.
    let position = shorts[8 * face + 3];
    while (position < list.length && list[position] !== -1) position += 65536;
    if (position < list.length) list[position] = face;
  }
  return table;
}

/**
 * Where the drawn and undrawn faces of the model are, apart from their coordinates: parallel arrays
 * with an entry a face. `batch` and `set` are indices into the model's flat lists, -1 for none; `face`
 * is the place in the batch, for an undrawn face the place among the group's planes; `table` the
 * place in the group's face table, -1 without one.
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
  return { drawn, undrawn };
}

/** The indices of a face's three vertices, and of its corners when it is drawn. */
export function cornersOf(model, kind, faces, entry) {
  if (kind === 'undrawn') {
    const { shorts } = model.groups[faces.group[entry]].faces;
    return { vertices: Array.from(shorts.subarray(8 * faces.table[entry], 8 * faces.table[entry] + 3)) };
  }
  const { indices } = model.batches[faces.batch[entry]];
  const at = 6 * faces.face[entry];
  return {
    vertices: Array.from(indices.subarray(at, at + 3)),
    corners: Array.from(indices.subarray(at + 3, at + 6)),
  };
}

/** The plane of a face as the file has it: normal and d. */
export function planeOf(model, kind, faces, entry) {
  const { planes } = kind === 'undrawn'
    ? model.groups[faces.group[entry]] : model.batches[faces.batch[entry]];
  return planes.subarray(4 * faces.face[entry], 4 * faces.face[entry] + 4);
}

/** The list that a face's vertex indices point into. */
export function pointsOf(model, kind, faces, entry) {
  const group = model.groups[faces.group[entry]];
  return kind === 'undrawn' ? group.points : group.vertices;
}

/** A direction of the file as bytes of the page, at `at` of `target`. */
function placeNormal(system, x, y, z, target, at) {
  const length = Math.hypot(x, y, z);
  const factor = Number.isFinite(length) && length > 0 ? (system.normalSign * 127) / length : 0;
  const file = [x, y, z];
  for (let axis = 0; axis < 3; ++axis) {
    target[at + axis] = factor === 0 ? 0 : system.signs[axis] * file[system.axes[axis]] * factor;
  }
}

/**
 * Positions, normals and (of drawn faces) texture coordinates of `faces` for the given coordinate
 * system, three entries a face, counter-clockwise seen from the front. `shown` has a 1 for every face
 * whose three positions can be shown; the others are a point at the origin.
 */
export function buildSoup(model, kind, faces, systemIndex, frame) {
  const system = coordinateSystem(systemIndex);
  const positions = new Float32Array(9 * faces.count);
  const normals = new Int8Array(12 * faces.count); // 4 bytes each
  const uvs = kind === 'drawn' ? new Float32Array(6 * faces.count) : null;
  const shown = new Uint8Array(faces.count);
  for (let entry = 0; entry < faces.count; ++entry) {
    const { vertices, corners } = cornersOf(model, kind, faces, entry);
    const points = pointsOf(model, kind, faces, entry);
    const plane = planeOf(model, kind, faces, entry);
    const batch = model.batches[faces.batch[entry]];
    // The exporter turned the corners around; the page turns them back.
    for (let k = 0; k < 3; ++k) {
      const corner = 2 - k;
      const at = 3 * entry + k;
      placePoint(system, frame, points, vertices[corner], positions, 3 * at);
      let normal = plane;
      if (batch) {
        const own = batch.normals.subarray(4 * corners[corner], 4 * corners[corner] + 3);
        if (own[0] !== 0 || own[1] !== 0 || own[2] !== 0) normal = own;
        uvs.set(batch.uvs.subarray(2 * corners[corner], 2 * corners[corner] + 2), 2 * at);
      }
      placeNormal(system, normal[0], normal[1], normal[2], normals, 4 * at);
    }
    const nine = positions.subarray(9 * entry, 9 * entry + 9);
    shown[entry] = nine.some(Number.isNaN) ? 0 : 1;
    if (!shown[entry]) nine.fill(0);
  }
  return { positions, normals, uvs, shown };
}
