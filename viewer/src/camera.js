// The camera: turns around a point (orbit) or moves through the level (walk).
import { PerspectiveCamera, Vector3 } from 'three';

const kSteepest = Math.PI / 2 - 0.01;
const kSize = 100; // about how large a level is in the page's units
const kNearest = 0.02; // of the orbited point
const kYaws = [0.6, 0.35, 0.6 - Math.PI / 2, 0.35 - Math.PI / 2]; // of the first view
const kPitches = [-0.5, -0.65, -0.8];

/** The points of flat lists of coordinates that reach furthest along and against directions. */
function outermost(lists, directions, stride) {
  const found = [];
  for (const { x, y, z } of directions) {
    let [least, most] = [Infinity, -Infinity];
    let [first, last] = [null, null];
    for (const list of lists) {
      for (let i = 0; i + 2 < list.length; i += 3 * stride) {
        const reach = x * list[i] + y * list[i + 1] + z * list[i + 2];
        if (reach < least) {
          least = reach;
          first = [list, i];
        }
        if (reach > most) {
          most = reach;
          last = [list, i];
        }
      }
    }
    for (const [list, i] of [first, last]) found.push(new Vector3().fromArray(list, i));
  }
  return found;
}

export class CameraRig {
  camera = new PerspectiveCamera(50, 1, 0.1, 1000);
  mode = 'orbit';
  #position = new Vector3(0, 0, 200);
  #yaw = 0;
  #pitch = 0;
  #distance = 200;

  /** Where the camera looks. */
  forward() {
    return new Vector3(
      -Math.sin(this.#yaw) * Math.cos(this.#pitch),
      Math.sin(this.#pitch),
      -Math.cos(this.#yaw) * Math.cos(this.#pitch),
    );
  }

  #right() {
    return new Vector3(Math.cos(this.#yaw), 0, -Math.sin(this.#yaw));
  }

  #pivot() {
    return this.#position.clone().addScaledVector(this.forward(), this.#distance);
  }

  #placeAround(pivot) {
    this.#position.copy(pivot).addScaledVector(this.forward(), -this.#distance);
  }

  /** Turns by angles in radians: around the pivot, or, when walking, around the eyes. */
  turn(yaw, pitch) {
    const pivot = this.#pivot();
    this.#yaw += yaw;
    this.#pitch = Math.min(kSteepest, Math.max(-kSteepest, this.#pitch + pitch));
    if (this.mode === 'orbit') this.#placeAround(pivot);
  }

  /**
   * Moves towards the pivot (factor below 1) or away from it; when walking, forwards or backwards.
   */
  zoom(factor) {
    if (this.mode === 'walk') {
      this.move(0, 0, (1 - factor) * kSize * 0.1);
      return;
    }
    const pivot = this.#pivot();
    this.#distance = Math.min(50 * kSize, Math.max(kNearest, this.#distance * factor));
    this.#placeAround(pivot);
  }

  /** Pans by fractions of the picture height. */
  pan(x, y) {
    const height = 2 * this.#distance * Math.tan((this.camera.fov * Math.PI) / 360);
    const up = this.#right().cross(this.forward());
    this.#position.addScaledVector(this.#right(), -x * height).addScaledVector(up, y * height);
  }

  /** Moves by lengths: right, up, and ahead; when walking, ahead is horizontal. */
  move(right, up, ahead) {
    const forward = this.forward();
    if (this.mode === 'walk') forward.crossVectors(new Vector3(0, 1, 0), this.#right());
    this.#position.addScaledVector(this.#right(), right).addScaledVector(forward, ahead);
    this.#position.y += up;
  }

  /** Moves the eyes to `eye`, looking horizontally in the current direction. */
  stand(eye) {
    this.#position.copy(eye);
    this.#pitch = 0;
    this.#distance = 0.1 * kSize;
  }

  /**
   * Shows all points of some flat lists of coordinates, or every `stride`-th; with `direction`,
   * looks against it. Returns the share of the picture that the rectangle around them takes.
   */
  frame(lists, direction = null, stride = 1) {
    if (direction) {
      this.#pitch = Math.min(kSteepest, Math.max(-kSteepest, Math.asin(-direction.y)));
      if (Math.hypot(direction.x, direction.z) > 1e-6) {
        this.#yaw = Math.atan2(direction.x, direction.z);
      }
    }
    const forward = this.forward();
    const right = this.#right();
    const up = right.clone().cross(forward);
    const tanUp = Math.tan((this.camera.fov * Math.PI) / 360);
    const tanRight = tanUp * this.camera.aspect;
    const sides = [-tanRight, 0, tanRight].map((tan) =>
      right.clone().addScaledVector(forward, tan),
    );
    const ends = [-tanUp, 0, tanUp].map((tan) => up.clone().addScaledVector(forward, tan));
    const outer = outermost(lists, [...sides, ...ends, forward], stride);
    const centre = new Vector3();
    for (const axis of [right, up, forward]) {
      const reached = outer.map((point) => point.dot(axis));
      centre.addScaledVector(axis, (Math.max(...reached) + Math.min(...reached)) / 2);
    }
    const arms = outer.map((point) => point.sub(centre));
    // A point at (r, u, f) is in the picture of a camera at (a, b, -d) when |r - a| <= (f + d) tan
    // and the same holds for u and b: the least d for which there are such a and b.
    const leastDistance = (axis, tan) => {
      const most = Math.max(...arms.map((arm) => arm.dot(axis) - tan * arm.dot(forward)));
      const least = Math.min(...arms.map((arm) => arm.dot(axis) + tan * arm.dot(forward)));
      return (most - least) / (2 * tan);
    };
    this.#distance =
      1.06 * Math.max(10 * kNearest, leastDistance(right, tanRight), leastDistance(up, tanUp));
    // The remaining space is shared evenly between both sides of the picture.
    const extent = (axis) => {
      let middle = 0;
      let width = 0;
      for (let round = 0; round < 10; ++round) {
        const seen = arms
          .map((arm) => {
            const depth = arm.dot(forward) + this.#distance;
            return { at: (arm.dot(axis) - middle) / depth, depth };
          })
          .sort((one, other) => one.at - other.at);
        const [least, most] = [seen[0], seen.at(-1)];
        // Where these two would be equally far from the middle.
        middle += (least.at + most.at) / (1 / least.depth + 1 / most.depth);
        width = most.at - least.at;
      }
      return { middle, width };
    };
    const across = extent(right);
    const upright = extent(up);
    this.#placeAround(
      centre.addScaledVector(right, across.middle).addScaledVector(up, upright.middle),
    );
    return (across.width * upright.width) / (4 * tanRight * tanUp);
  }

  /** The initial view: from above, at the angle that fills the picture best. */
  reset(lists) {
    const total = lists.reduce((sum, list) => sum + list.length / 3, 0);
    const stride = Math.max(1, Math.floor(total / 10000));
    let best = { share: 0 };
    for (const yaw of kYaws) {
      for (const pitch of kPitches) {
        this.place = { ...this.place, yaw, pitch };
        const share = this.frame(lists, null, stride);
        if (share > best.share + 0.02) best = { share, yaw, pitch };
      }
    }
    this.place = { ...this.place, ...best };
    this.frame(lists);
  }

  /** Where the camera is and looks: position (x, y, z), yaw, pitch, distance of the pivot. */
  get place() {
    return {
      position: this.#position.toArray(),
      yaw: this.#yaw,
      pitch: this.#pitch,
      distance: this.#distance,
    };
  }

  set place({ position, yaw, pitch, distance }) {
    this.#position.fromArray(position);
    this.#yaw = yaw;
    this.#pitch = Math.min(kSteepest, Math.max(-kSteepest, pitch));
    this.#distance = Math.min(50 * kSize, Math.max(kNearest, distance));
  }

  /** Updates the camera for a picture of this aspect ratio, of a level within `sphere`. */
  update(aspect, sphere) {
    const away = this.#position.distanceTo(sphere.center);
    this.camera.aspect = aspect;
    this.camera.near = Math.max(
      0.01,
      Math.min(this.#distance * 0.1, kSize * 0.0005),
      (away - 1.1 * sphere.radius) * 0.9,
    );
    this.camera.far = away + 20 * sphere.radius + kSize;
    this.camera.position.copy(this.#position);
    this.camera.rotation.set(this.#pitch, this.#yaw, 0, 'YXZ');
    this.camera.updateProjectionMatrix();
    this.camera.updateMatrixWorld();
  }
}
