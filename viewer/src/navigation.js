// Mouse, touch and keys of the 3D view.

const kTurn = 0.006; // radians a pixel
const kKeyTurn = 1.4; // radians a second
const kKeyPan = 0.6; // picture heights a second
const kWalk = 14; // units of the page a second
const kFirstStep = 0.03; // seconds
const kClickPixels = 5;

/**
 * Moves `rig` by the events of `canvas`. `moved` is called after every change of the camera,
 * `clicked(x, y)` with coordinates from -1 to 1, and `keyed(key)` for every other key; it returns
 * whether it used the key.
 */
export class Navigation {
  #canvas;
  #rig;
  #calls;
  #pointers = new Map();
  #travel = 0;
  #held = new Map(); // by the codes of held keys, what they do
  #lastFrame = 0;
  #speed = 1;

  constructor(canvas, rig, calls) {
    this.#canvas = canvas;
    this.#rig = rig;
    this.#calls = calls;
    canvas.addEventListener('pointerdown', (event) => this.#press(event));
    canvas.addEventListener('pointermove', (event) => this.#drag(event));
    canvas.addEventListener('pointerup', (event) => this.#release(event, true));
    canvas.addEventListener('pointercancel', (event) => this.#release(event, false));
    canvas.addEventListener('wheel', (event) => this.#wheel(event), { passive: false });
    canvas.addEventListener('contextmenu', (event) => event.preventDefault());
    document.addEventListener('keydown', (event) => this.#isForView(event) && this.#keyDown(event));
    document.addEventListener('keyup', (event) => this.#held.delete(event.code));
    document.addEventListener('focusin', () => this.#held.clear());
    window.addEventListener('blur', () => this.#held.clear());
  }

  #press(event) {
    this.#canvas.focus({ preventScroll: true });
    this.#canvas.setPointerCapture(event.pointerId);
    if (this.#pointers.size === 0) this.#travel = 0;
    this.#pointers.set(event.pointerId, { x: event.clientX, y: event.clientY });
  }

  #drag(event) {
    const before = this.#pointers.get(event.pointerId);
    if (!before) return;
    const x = event.clientX - before.x;
    const y = event.clientY - before.y;
    this.#travel += Math.abs(x) + Math.abs(y);
    const height = this.#canvas.clientHeight;
    if (this.#pointers.size === 2) {
      const other = [...this.#pointers].find(([id]) => id !== event.pointerId)[1];
      const gap = (point) => Math.max(1, Math.hypot(point.x - other.x, point.y - other.y));
      this.#rig.zoom(gap(before) / gap({ x: event.clientX, y: event.clientY }));
      this.#rig.pan(x / height / 2, y / height / 2);
    } else if (event.buttons & 6 || event.shiftKey) {
      this.#rig.pan(x / height, y / height);
    } else {
      this.#rig.turn(-x * kTurn, -y * kTurn);
    }
    before.x = event.clientX;
    before.y = event.clientY;
    this.#calls.moved();
  }

  #release(event, whole) {
    const known = this.#pointers.delete(event.pointerId);
    if (!known || !whole || this.#travel > kClickPixels || event.button !== 0) return;
    const box = this.#canvas.getBoundingClientRect();
    this.#calls.clicked(
      ((event.clientX - box.left) / box.width) * 2 - 1,
      1 - ((event.clientY - box.top) / box.height) * 2,
    );
  }

  #wheel(event) {
    event.preventDefault();
    const lines = event.deltaMode === 0 ? event.deltaY / 100 : event.deltaY / 3;
    this.#rig.zoom(Math.exp(0.15 * Math.max(-4, Math.min(4, lines))));
    this.#calls.moved();
  }

  static #moves = new Set([
    'ArrowLeft',
    'ArrowRight',
    'ArrowUp',
    'ArrowDown',
    'KeyW',
    'KeyA',
    'KeyS',
    'KeyD',
    'KeyQ',
    'KeyE',
    'PageUp',
    'PageDown',
  ]);

  /** What a key moves; null for other keys. */
  static #moveOf({ key, code }) {
    // These are elsewhere on other keyboards: a German one has the question mark where - is.
    if (key === '+' || key === '=') return 'nearer';
    if (key === '-') return 'further';
    return Navigation.#moves.has(code) ? code : null;
  }

  /**
   * Keys act wherever the focus is, except those that mean something to the element that has it;
   * while nothing has the focus, a page that is higher than the window keeps the keys that scroll.
   */
  #isForView({ target, key, ctrlKey, metaKey, altKey }) {
    if (ctrlKey || metaKey || altKey || document.querySelector('dialog[open]')) return false;
    if (target === this.#canvas) return true;
    if (target.closest('select, input:not([type="radio"], [type="checkbox"])')) return false;
    if (target !== document.body) return key === 'Escape' || (key.length === 1 && key !== ' ');
    const { scrollHeight, clientHeight } = document.documentElement;
    return scrollHeight <= clientHeight || !/^(Arrow.*|Page.*| )$/.test(key);
  }

  #keyDown(event) {
    const move = Navigation.#moveOf(event);
    if (move) {
      event.preventDefault();
      this.#speed = event.shiftKey ? 4 : 1;
      if (event.repeat) return;
      const first = this.#held.size === 0;
      this.#held.set(event.code, move);
      this.#advance(kFirstStep); // at once: the key may be released before the next frame
      if (!first) return;
      this.#lastFrame = performance.now();
      requestAnimationFrame((now) => this.#step(now));
    } else if (this.#calls.keyed(event.key)) {
      event.preventDefault();
    }
  }

  /** Continues while keys are held. */
  #step(now) {
    if (this.#held.size === 0) return;
    this.#advance(Math.min(0.1, Math.max(0, now - this.#lastFrame) / 1000));
    this.#lastFrame = now;
    requestAnimationFrame((next) => this.#step(next));
  }

  /** Moves by the held keys for a time of `seconds`. */
  #advance(seconds) {
    const held = [...this.#held.values()];
    const axis = (less, more) => held.includes(more) - held.includes(less);
    const x = axis('ArrowLeft', 'ArrowRight');
    const y = axis('ArrowDown', 'ArrowUp');
    const shifted = this.#speed > 1;
    if (this.#rig.mode === 'orbit' && shifted) {
      this.#rig.pan(-x * kKeyPan * seconds, y * kKeyPan * seconds);
    } else {
      const sign = this.#rig.mode === 'orbit' ? 1 : -1;
      this.#rig.turn(sign * x * kKeyTurn * seconds, -sign * y * kKeyTurn * seconds);
    }
    const length = kWalk * this.#speed * seconds;
    this.#rig.move(
      length * axis('KeyA', 'KeyD'),
      length * (axis('KeyQ', 'KeyE') + axis('PageDown', 'PageUp')),
      length * axis('KeyS', 'KeyW'),
    );
    const nearer = axis('further', 'nearer');
    if (nearer !== 0) this.#rig.zoom(Math.exp(-1.5 * seconds * nearer));
    this.#calls.moved();
  }
}
