// Sizes and directions of the triangles of a mesh as placeMesh makes it.
import { Box3, Vector3 } from 'three';

/** The three corners of a face. */
export function cornersAt({ positions, index }, entry) {
  return [0, 1, 2].map((k) => new Vector3().fromArray(positions, 3 * index[3 * entry + k]));
}

/** The box around all faces that can be shown, or some of them. */
export function boxOf(mesh, entries = null) {
  const box = new Box3();
  const point = new Vector3();
  const count = entries ? entries.length : mesh.shown.length;
  for (let i = 0; i < count; ++i) {
    const entry = entries ? entries[i] : i;
    if (!mesh.shown[entry]) continue;
    for (let k = 0; k < 3; ++k) {
      box.expandByPoint(point.fromArray(mesh.positions, 3 * mesh.index[3 * entry + k]));
    }
  }
  return box;
}

/** The positions of the visible faces, at least, as a flat list. */
export function visiblePositions({ positions, index, visibleIndex }) {
  if (visibleIndex === index) return positions;
  const list = new Float32Array(3 * visibleIndex.length);
  visibleIndex.forEach((from, at) => list.set(positions.subarray(3 * from, 3 * from + 3), 3 * at));
  return list;
}

/** The direction of a face's front; length 0 for none. */
export function normalOf(mesh, entry) {
  const [a, b, c] = cornersAt(mesh, entry);
  return b.sub(a).cross(c.sub(a)).normalize();
}

export function middleOf(mesh, entry) {
  const [a, b, c] = cornersAt(mesh, entry);
  return a.add(b).add(c).divideScalar(3);
}

/** The eight corners of a box, as a flat list. */
export function cornersOfBox({ min, max }) {
  return Array.from({ length: 8 }, (_, corner) => [
    corner & 1 ? max.x : min.x,
    corner & 2 ? max.y : min.y,
    corner & 4 ? max.z : min.z,
  ]).flat();
}
