// What helps to judge sizes: the file's axes, a grid, a figure as tall as a person, a measure.
import {
  BufferAttribute,
  BufferGeometry,
  Color,
  CylinderGeometry,
  Group,
  LineBasicMaterial,
  LineSegments,
  Mesh,
  MeshLambertMaterial,
  SphereGeometry,
  Vector3,
} from 'three';

import { coordinateSystem, placePoint } from './coordinates.js';
import { kSolid } from './shading.js';

// The units of a file are not known: centimetres, unless the whole level would be a few steps wide.
const kCentimetres = 180;
const kMetres = 1.8;
const kSmallest = 300;

const kAxisColours = [new Color('#d83a3a'), new Color('#2f9e44'), new Color('#3b6fe0')];

/** The largest of 1, 2, 5, 10, 20 ... times a power of ten that is at most `length`. */
function roundStep(length) {
  const power = 10 ** Math.floor(Math.log10(length));
  return power * ([5, 2, 1].find((factor) => factor * power <= length) ?? 1);
}

/** The direction, in the page's axes, in which coordinate `axis` of the file grows. */
export function directionOf(systemIndex, axis) {
  const { axes, signs } = coordinateSystem(systemIndex);
  return new Vector3(...axes.map((from, at) => (from === axis ? signs[at] : 0)));
}

function lines(material, order = 0) {
  const made = new LineSegments(new BufferGeometry(), material);
  made.frustumCulled = false;
  made.renderOrder = order;
  made.visible = false;
  return made;
}

function setPoints(segments, points) {
  segments.geometry.dispose();
  segments.geometry.setAttribute('position', new BufferAttribute(new Float32Array(points), 3));
}

/** A person, 1 tall, who stands on the origin. */
function makeFigure() {
  const material = new MeshLambertMaterial({ color: 0xe8a33d });
  const made = new Group();
  const add = (geometry, x, y) => {
    const part = new Mesh(geometry, material);
    part.position.set(x, y, 0);
    part.layers.enable(kSolid);
    made.add(part);
  };
  add(new SphereGeometry(0.068, 16, 12), 0, 0.932);
  add(new CylinderGeometry(0.13, 0.09, 0.36, 16), 0, 0.67);
  for (const side of [-1, 1]) {
    add(new CylinderGeometry(0.055, 0.035, 0.49, 12), 0.06 * side, 0.245);
    add(new CylinderGeometry(0.03, 0.025, 0.4, 10), 0.155 * side, 0.64);
  }
  made.visible = false;
  return made;
}

export class Aids {
  #frame;
  #grid = lines(new LineBasicMaterial({ color: 0x7d8590, transparent: true, opacity: 0.7 }), 1);
  #axes = lines(new LineBasicMaterial({ vertexColors: true, depthTest: false }), 6);
  #measured = lines(new LineBasicMaterial({ color: 0xff2f6d, depthTest: false }), 7);
  #figure = makeFigure();
  /** The distance of the grid's lines in the file's units; 0 without a grid. */
  step = 0;
  /** The height of the figure in the file's units. */
  height;

  constructor(frame) {
    this.#frame = frame;
    const colours = kAxisColours.flatMap((colour) => [...colour.toArray(), ...colour.toArray()]);
    const attribute = new BufferAttribute(new Float32Array(colours), 3);
    this.#axes.geometry.setAttribute('color', attribute);
    this.height = frame.size < kSmallest ? kMetres : kCentimetres;
    this.#figure.scale.setScalar(this.height * frame.scale);
  }

  get objects() {
    return [this.#grid, this.#axes, this.#measured, this.#figure];
  }

  /** Places grid and axes for a coordinate system, the grid under `box`. */
  place(systemIndex, box) {
    const { scale, centre, size } = this.#frame;
    const system = coordinateSystem(systemIndex);
    const step = size > 0 ? roundStep(size / 16) : 0;
    this.step = step * scale > 0 && Number.isFinite(step * scale) ? step : 0;
    const points = [];
    const sides = [0, 2].map((axis) => {
      const from = system.axes[axis];
      const ends = [box.min, box.max].map(
        (corner) =>
          (system.signs[axis] * corner.getComponent(axis)) / scale / step + centre[from] / step,
      );
      const first = Math.floor(Math.min(...ends));
      const count = Math.min(200, Math.ceil(Math.max(...ends)) - first);
      return Array.from(
        { length: count + 1 },
        (_, i) => system.signs[axis] * ((first + i) * step - centre[from]) * scale,
      );
    });
    if (this.step > 0) {
      const [x, z] = sides;
      const { y } = box.min;
      for (const at of x) points.push(at, y, z[0], at, y, z.at(-1));
      for (const at of z) points.push(x[0], y, at, x.at(-1), y, at);
    }
    setPoints(this.#grid, points);
    const origin = [0, 0, 0];
    placePoint(system, this.#frame, [0, 0, 0], 0, origin, 0);
    const start = new Vector3(...origin);
    const length = Math.max(2, 2 * this.step * scale);
    const ends = [0, 1, 2].flatMap((axis) => [
      ...origin,
      ...start.clone().addScaledVector(directionOf(systemIndex, axis), length).toArray(),
    ]);
    setPoints(this.#axes, origin.some(Number.isNaN) ? [] : ends);
  }

  show({ grid = false, axes = false, figure = false }) {
    this.#grid.visible = grid;
    this.#axes.visible = axes;
    this.#figure.visible = figure;
  }

  /** Puts the figure on a point in the page's units. */
  stand(point) {
    this.#figure.position.set(...point);
  }

  /** Shows crosses at points in the page's units, and the line between two. */
  measure(points) {
    const shapes = points.length === 2 ? points.flat() : [];
    for (const point of points) {
      for (let axis = 0; axis < 3; ++axis) {
        for (const sign of [-1, 1]) {
          const end = [...point];
          end[axis] += sign * 0.7;
          shapes.push(...end);
        }
      }
    }
    setPoints(this.#measured, shapes);
    this.#measured.visible = points.length > 0;
  }
}
