// The camera: turns around a point (orbit) or moves through the level (walk).
import { PerspectiveCamera, Vector3 } from 'three';

const kSteepest = Math.PI / 2 - 0.01;
const kSize = 100; // about how large a level is in the page's units
const kNearest = 0.02; // of the orbited point

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

  /** Shows all of a Box3; with `direction`, looks against it. */
  frame(box, direction = null) {
    if (direction) {
      this.#pitch = Math.min(kSteepest, Math.max(-kSteepest, Math.asin(-direction.y)));
      if (Math.hypot(direction.x, direction.z) > 1e-6) {
        this.#yaw = Math.atan2(direction.x, direction.z);
      }
    }
    const centre = box.getCenter(new Vector3());
    const forward = this.forward();
    const right = this.#right();
    const up = right.clone().cross(forward);
    const tanUp = Math.tan((this.camera.fov * Math.PI) / 360);
    const tanRight = tanUp * this.camera.aspect;
    const arms = Array.from({ length: 8 }, (_, corner) =>
      new Vector3(
        corner & 1 ? box.max.x : box.min.x,
        corner & 2 ? box.max.y : box.min.y,
        corner & 4 ? box.max.z : box.min.z,
      ).sub(centre),
    );
    // A corner at (r, u, f) is in the picture of a camera at (a, b, -d) when |r - a| <= (f + d) tan
    // and the same holds for u and b: the least d for which there are such a and b.
    const leastDistance = (axis, tan) => {
      const most = Math.max(...arms.map((arm) => arm.dot(axis) - tan * arm.dot(forward)));
      const least = Math.min(...arms.map((arm) => arm.dot(axis) + tan * arm.dot(forward)));
      return (most - least) / (2 * tan);
    };
    this.#distance =
      1.06 * Math.max(10 * kNearest, leastDistance(right, tanRight), leastDistance(up, tanUp));
    // The remaining space is shared evenly between both sides of the picture.
    const middle = (axis) => {
      let at = 0;
      for (let round = 0; round < 10; ++round) {
        const seen = arms.map((arm) => (arm.dot(axis) - at) / (arm.dot(forward) + this.#distance));
        at += ((Math.max(...seen) + Math.min(...seen)) / 2) * this.#distance;
      }
      return at;
    };
    this.#placeAround(centre.addScaledVector(right, middle(right)).addScaledVector(up, middle(up)));
  }

  /** The initial view: from above, at an angle. */
  reset(box) {
    this.#yaw = 0.6;
    this.#pitch = -0.55;
    this.frame(box);
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
