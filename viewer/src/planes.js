// Shows the planes of the faces that only collide.
import { Vector3 } from 'three';

import { coordinateSystem } from './coordinates.js';
import { planeOf } from './faces.js';
import { cornersAt, middleOf } from './shapes.js';

const kSquare = 0.6; // half its edge, as a part of the face's radius
const kPin = 0.8;

/**
 * For each of the undrawn `faces`, a square on its stored plane, near the face, and a pin along its
 * normal: lists of numbers, `squares` for triangles and `pins` for lines. A plane that is away from
 * its face is visible as such.
 */
export function planeShapes(model, faces, mesh, systemIndex, frame) {
  const system = coordinateSystem(systemIndex);
  const squares = [];
  const pins = [];
  for (let entry = 0; entry < faces.count; ++entry) {
    const plane = planeOf(model, 'undrawn', faces, entry);
    const normal = new Vector3(...system.axes.map((axis, i) => system.signs[i] * plane[axis]));
    const length = normal.length();
    if (!mesh.visible[entry] || !(length > 0 && Number.isFinite(length + plane[3]))) continue;

    const middle = middleOf(mesh, entry);
    const radius = Math.max(...cornersAt(mesh, entry).map((corner) => corner.distanceTo(middle)));
    // From the face's centre along the normal onto the plane: n . p + d = 0 in the file's units.
    const atCentre = [0, 1, 2].reduce((sum, axis) => sum + plane[axis] * frame.centre[axis], 0);
    const off = normal.dot(middle) + (atCentre + plane[3]) * frame.scale;
    middle.addScaledVector(normal, -off / (length * length));
    normal.multiplyScalar(system.normalSign / length);

    const side = new Vector3(0, 1, 0).cross(normal);
    if (side.lengthSq() < 1e-6) side.set(1, 0, 0);
    side.setLength(kSquare * radius);
    const up = normal.clone().cross(side);
    const at = (x, y) => middle.clone().addScaledVector(side, x).addScaledVector(up, y).toArray();
    squares.push(...at(-1, -1), ...at(1, -1), ...at(1, 1));
    squares.push(...at(-1, -1), ...at(1, 1), ...at(-1, 1));
    pins.push(...middle.toArray(), ...middle.addScaledVector(normal, kPin * radius).toArray());
  }
  return { squares, pins };
}
