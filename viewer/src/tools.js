// Measuring, the section plane, and the texts about grid, axes and figure.
import { Plane, Vector3 } from 'three';

import { Aids, directionOf } from './aids.js';
import { coordinateSystem, filePoint, placePoint } from './coordinates.js';
import { element, rounded } from './text.js';

const kAxisNames = ['X', 'Y', 'Z'];
const kSteps = 1000; // of the section's slider

/** How far apart two points of the file are, in total and along its axes. */
function distanceText([from, to]) {
  const parts = from.map((value, axis) => to[axis] - value);
  const along = parts.map((part, axis) => `${kAxisNames[axis]} ${rounded(part)}`);
  return `Distance ${rounded(Math.hypot(...parts))} (${along.join(', ')})`;
}

/** `changed` is called after every change, for the address. */
export class Tools {
  #scene;
  #frame;
  #changed;
  #aids;
  #parts = {};
  #system = 0;
  #measured = []; // points of the file
  #figure = null; // a point of the file
  #section = { axis: 1, flipped: false, at: 0 }; // `at` in the file's units
  #find = (id) => document.getElementById(id);

  constructor(scene, frame, changed) {
    this.#scene = scene;
    this.#frame = frame;
    this.#changed = changed;
    this.#aids = new Aids(frame);
    scene.add(...this.#aids.objects);
    const find = this.#find;
    const choose = () => {
      const axis = Number(find('section-axis').value);
      const [least, most] = this.#range(axis);
      const at = least + ((most - least) * Number(find('section-at').value)) / kSteps;
      this.#section = { axis, flipped: find('section-flipped').checked, at };
      this.#update();
      changed();
    };
    for (const id of ['section-axis', 'section-at', 'section-flipped']) find(id).oninput = choose;
  }

  #toPage(point) {
    const placed = [0, 0, 0];
    placePoint(coordinateSystem(this.#system), this.#frame, point, 0, placed, 0);
    return placed;
  }

  #toFile(place) {
    // What the page's 32-bit floats leave of a zero is one again.
    const none = 1e-6 * this.#frame.size;
    return filePoint(coordinateSystem(this.#system), this.#frame, place).map((value) =>
      Math.abs(value) < none ? 0 : value,
    );
  }

  /** The least and the greatest coordinate of the level along an axis of the file. */
  #range(axis) {
    const { min, max } = this.#scene.box;
    const ends = [min, max].map((corner) => this.#toFile(corner.toArray())[axis]);
    return ends.sort((a, b) => a - b);
  }

  /** Begins anew in a coordinate system. */
  setSystem(index) {
    this.#system = index;
    this.#aids.place(index, this.#scene.box);
    this.#measured = [];
    this.#figure = null;
    const axis = coordinateSystem(index).axes[1];
    const [least, most] = this.#range(axis);
    this.#section = { axis, flipped: false, at: (least + most) / 2 };
    this.#update();
  }

  /** `spot` gives a place, in the page's units, for a figure that has none. */
  setParts(parts, spot) {
    if (!parts.measure) this.#measured = [];
    if (parts.figure && !this.#figure) this.#figure = this.#toFile(spot());
    if (!parts.figure) this.#figure = null;
    this.#parts = { ...parts };
    this.#update();
  }

  /** Takes a point of the page for measuring; the third one begins anew. */
  take(point) {
    if (this.#measured.length === 2) this.#measured = [];
    this.#measured.push(this.#toFile(point));
    this.#update();
    this.#changed();
  }

  #plane() {
    const { axis, flipped, at } = this.#section;
    const direction = directionOf(this.#system, axis);
    const point = [0, 0, 0];
    point[axis] = at;
    const normal = direction.multiplyScalar(flipped ? 1 : -1);
    return new Plane().setFromNormalAndCoplanarPoint(normal, new Vector3(...this.#toPage(point)));
  }

  #update() {
    const find = this.#find;
    const { section, axes, grid, figure, measure } = this.#parts;
    const { axis, flipped, at } = this.#section;
    const [least, most] = this.#range(axis);
    find('section').hidden = !section;
    find('section-axis').value = String(axis);
    find('section-flipped').checked = flipped;
    find('section-at').value = String(most > least ? (kSteps * (at - least)) / (most - least) : 0);
    find('section-at').setAttribute('aria-valuetext', rounded(at));
    find('section-value').textContent = rounded(at);
    this.#scene.setSection(section ? this.#plane() : null);

    this.#aids.show(this.#parts);
    if (this.#figure) this.#aids.stand(this.#toPage(this.#figure));
    this.#aids.measure(this.#measured.map((point) => this.#toPage(point)));
    find('axes').toggleAttribute('hidden', !axes);
    const texts = [];
    if (measure) {
      const wanted = ['Click the first point', 'Click the second point'][this.#measured.length];
      texts.push(wanted ?? distanceText(this.#measured));
    }
    if (grid && this.#aids.step > 0) texts.push(`Grid step ${rounded(this.#aids.step)}`);
    if (figure) texts.push(`Figure ${this.#aids.height} tall`);
    find('readout').replaceChildren(...texts.map((text) => element('p', {}, text)));
    this.#scene.draw();
  }

  /** Turns the axes in the picture's corner like the camera. */
  showAxes(camera) {
    if (!this.#parts.axes) return;
    kAxisNames.forEach((name, axis) => {
      const direction = directionOf(this.#system, axis);
      direction.applyQuaternion(camera.quaternion.clone().invert());
      const [line, text] = this.#find('axes').querySelectorAll(`.axis-${name}`);
      line.setAttribute('x2', 40 + 24 * direction.x);
      line.setAttribute('y2', 40 - 24 * direction.y);
      text.setAttribute('x', 40 + 32 * direction.x);
      text.setAttribute('y', 40 - 32 * direction.y);
    });
  }

  /** What the address needs of it: texts, null for those that are not shown. */
  get link() {
    const { section, figure } = this.#parts;
    const { axis, flipped, at } = this.#section;
    const name = `${flipped ? '-' : ''}${kAxisNames[axis].toLowerCase()}`;
    const list = (numbers) => numbers.map(rounded).join();
    return {
      section: section ? `${name},${rounded(at)}` : null,
      measure: this.#measured.length > 0 ? list(this.#measured.flat()) : null,
      figure: figure ? list(this.#figure) : null,
    };
  }

  /** Takes what readLink found of it. */
  set link({ section, measure, figure }) {
    if (section) {
      const [least, most] = this.#range(section.axis);
      this.#section = { ...section, at: Math.min(most, Math.max(least, section.at)) };
    }
    const isNear = (point) => !this.#toPage(point).some(Number.isNaN);
    if (figure && isNear(figure)) this.#figure = figure;
    this.#measured = measure?.every(isNear) ? measure : [];
    this.#update();
  }
}
