// When pictures are drawn, and how well: the best when nothing moves.
const kRest = 350; // milliseconds without a picture after which nothing moves

export class Pace {
  #canvas;
  #software;
  #calls;
  #slowPictures = 0;
  #lastPicture = -Infinity;
  #wanted = 0; // when the next picture was asked for
  #rest = 0;
  #waiting = false;
  #still = false; // whether the next picture shows what the last one did
  /** While things move, slow pictures (without a graphics card) have a lower resolution. */
  coarse = false;
  /** Whether something is missing that comes later; the canvas is busy until then. */
  loading = false;

  /**
   * `calls` has paint(still), which draws and returns whether that is as good as it gets, and
   * sharpen(), which is called when `coarse` has changed.
   */
  constructor(canvas, software, calls) {
    this.#canvas = canvas;
    this.#software = software;
    this.#calls = calls;
  }

  /** Draws once, with the browser's next frame. */
  draw(still = false) {
    this.#still = still;
    if (this.#waiting) return;
    this.#waiting = true;
    this.#wanted = performance.now();
    this.#canvas.setAttribute('aria-busy', 'true');
    requestAnimationFrame((now) => {
      this.#waiting = false;
      clearTimeout(this.#rest);
      if (!this.#still) this.#keepPace(now);
      const isBest = this.#calls.paint(this.#still);
      // The best picture may be slow; that does not count as movement.
      if (this.#still) this.#lastPicture = -Infinity;
      if (!isBest) this.#rest = setTimeout(() => this.#finish(), kRest);
      else if (!this.loading && !this.#waiting) this.#canvas.removeAttribute('aria-busy');
    });
  }

  #keepPace(now) {
    const gap = now - this.#lastPicture;
    this.#lastPicture = now;
    // A gap may be a pause, unless a picture was wanted all the time.
    const slow = (gap > 45 && gap < 400) || (now - this.#wanted > 45 && gap < 2500);
    this.#slowPictures = slow ? this.#slowPictures + 1 : 0;
    if (this.coarse || this.#slowPictures < (this.#software ? 1 : 3)) return;
    this.coarse = true;
    this.#calls.sharpen();
  }

  #finish() {
    if (this.#waiting) {
      this.#rest = setTimeout(() => this.#finish(), kRest); // still moving, but slower than that
      return;
    }
    this.#slowPictures = 0;
    if (this.coarse) {
      this.coarse = false;
      this.#calls.sharpen();
    }
    this.draw(true);
  }
}
