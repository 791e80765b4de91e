// The triangles of a model as a mesh to draw; equal vertices are shared.
import { coordinateSystem, placePoint } from './coordinates.js';
import { cornersOf, planeOf, pointsOf } from './faces.js';

/**
 * The corners of `faces` as vertices of a mesh: drawn faces of one batch, set and change share
 * vertices with the same position and attributes. Parallel arrays with one entry per vertex:
 * `entry` is the first face that has it, `vertex` the index of its position in the file, `corner`
 * that of its attributes. `index` has three vertices per face in reverse order, because the
 * exporter reversed them.
 */
export function shareCorners(model, kind, faces) {
  const index = new Uint32Array(3 * faces.count);
  const own = { entry: [], vertex: [], corner: [] };
  const known = new Map();
  let batch = -1;
  for (let entry = 0; entry < faces.count; ++entry) {
    if (faces.batch[entry] !== batch) {
      batch = faces.batch[entry];
      known.clear();
    }
    const { vertices, corners } = cornersOf(model, kind, faces, entry);
    for (let k = 0; k < 3; ++k) {
      const vertex = vertices[2 - k];
      const corner = corners ? corners[2 - k] : 0;
      const owner = 4 * (faces.set[entry] + 1) + (faces.change?.[entry] ?? 0);
      const key = (owner * 65536 + corner) * 65536 + vertex;
      // Collision faces are flat, so each has separate corners.
      let at = corners ? known.get(key) : undefined;
      if (at === undefined) {
        at = own.entry.length;
        known.set(key, at);
        own.entry.push(entry);
        own.vertex.push(vertex);
        own.corner.push(corner);
      }
      index[3 * entry + k] = at;
    }
  }
  return {
    count: own.entry.length,
    index,
    entry: Uint32Array.from(own.entry),
    vertex: Uint16Array.from(own.vertex),
    corner: Uint16Array.from(own.corner),
  };
}

/** Writes a direction of the file as bytes in the page's axes to `at` of `target`; 0 for none. */
function placeNormal(system, x, y, z, target, at) {
  const length = Math.hypot(x, y, z);
  const factor = Number.isFinite(length) && length > 0 ? (system.normalSign * 127) / length : 0;
  const file = [x, y, z];
  for (let axis = 0; axis < 3; ++axis) {
    target[at + axis] = factor === 0 ? 0 : system.signs[axis] * file[system.axes[axis]] * factor;
  }
}

/**
 * Positions, normals (4 bytes each) and, for drawn faces, texture coordinates of a mesh's `corners`
 * in a coordinate system. `index` has three vertices per face, counter-clockwise from its front.
 * `shown` is 1 for every face whose three positions can be shown; `index` leaves out the others.
 */
export function placeMesh(model, kind, faces, corners, systemIndex, frame) {
  const system = coordinateSystem(systemIndex);
  const positions = new Float32Array(3 * corners.count);
  const normals = new Int8Array(4 * corners.count);
  const uvs = kind === 'drawn' ? new Float32Array(2 * corners.count) : null;
  for (let i = 0; i < corners.count; ++i) {
    const entry = corners.entry[i];
    placePoint(
      system,
      frame,
      pointsOf(model, kind, faces, entry),
      corners.vertex[i],
      positions,
      3 * i,
    );
    let normal = planeOf(model, kind, faces, entry);
    const batch = model.batches[faces.batch[entry]];
    if (batch) {
      const own = batch.normals.subarray(4 * corners.corner[i], 4 * corners.corner[i] + 3);
      if (own[0] !== 0 || own[1] !== 0 || own[2] !== 0) normal = own;
      uvs[2 * i] = batch.uvs[2 * corners.corner[i]];
      uvs[2 * i + 1] = batch.uvs[2 * corners.corner[i] + 1];
    }
    placeNormal(system, normal[0], normal[1], normal[2], normals, 4 * i);
  }

  const index = corners.index.slice();
  const shown = new Uint8Array(faces.count).fill(1);
  for (let entry = 0; entry < faces.count; ++entry) {
    const three = index.subarray(3 * entry, 3 * entry + 3);
    if (
      !three.some((at) =>
        Number.isNaN(positions[3 * at] + positions[3 * at + 1] + positions[3 * at + 2]),
      )
    ) {
      continue;
    }
    shown[entry] = 0;
    three.fill(0);
  }
  positions.forEach((value, i) => {
    if (Number.isNaN(value)) positions[i] = 0;
  });
  return { positions, normals, uvs, index, shown };
}
