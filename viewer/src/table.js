// A table of things that can be selected and sorted.
import { counted, element, swatch } from './text.js';

const kFirstRows = 150;

/**
 * `columns`: { title, number, label, words, cell(thing), key(thing) }. Columns of a count
 * (`number`) or a short `label` are narrow, those of `words` break only between words. `cell` gives
 * a text or element, `key` the value to sort by. The first column's cell becomes the button that
 * selects the row.
 */
export class ThingTable {
  #things;
  #columns;
  #order;
  #words = []; // what the search asks for, in lower case
  #texts = null; // of each thing, made by the first search
  #found;
  #sorted = { column: -1, down: false };
  #shown = kFirstRows;
  #extra = null; // a selected thing beyond the rows that are shown
  #body = element('tbody');
  #head = element('tr');
  #more = element('button', { type: 'button', className: 'more' });
  #scroll = element('div', { className: 'scroll' });
  #rows = new Map();
  #count;
  #choose;
  #swatch = () => null;
  #marks = { chosen: null, ofFace: null };

  constructor({ id, title, things, columns, open }, choose) {
    this.#things = things;
    this.#columns = columns;
    this.#choose = choose;
    this.#order = [...things];
    this.#found = this.#order;
    columns.forEach((column, index) => {
      const button = element(
        'button',
        { type: 'button', onclick: () => this.#sortBy(index) },
        column.title,
      );
      this.#head.append(
        element('th', { scope: 'col', className: column.number ? 'number' : '' }, button),
      );
    });
    this.#more.onclick = () => {
      this.#shown = this.#things.length;
      this.#fill();
    };
    this.#scroll.append(
      element('table', {}, element('thead', {}, this.#head), this.#body),
      this.#more,
    );
    const all = counted(things.filter((thing) => thing.id >= 0).length);
    this.#count = { all, shown: element('span', { className: 'count' }, all) };
    this.root = element(
      'details',
      { open: open && things.length > 0, id },
      element('summary', {}, element('h2', {}, title), ' ', this.#count.shown),
      things.length > 0 ? this.#scroll : element('p', { className: 'faint' }, 'none'),
    );
    this.#fill();
  }

  #sortBy(index) {
    const { key, number } = this.#columns[index];
    const again = this.#sorted.column === index;
    const down = again ? !this.#sorted.down : Boolean(number) && index > 0;
    this.#sorted = { column: index, down };
    const sign = down ? -1 : 1;
    this.#order = [...this.#things].sort((a, b) => {
      const [x, y] = [key(a), key(b)];
      return sign * (x < y ? -1 : x > y ? 1 : 0) || a.id - b.id;
    });
    [...this.#head.children].forEach((cell, at) => {
      if (at === index) cell.setAttribute('aria-sort', down ? 'descending' : 'ascending');
      else cell.removeAttribute('aria-sort');
    });
    this.#filter();
  }

  /** Shows only rows that contain all of `words`, which are in lower case; returns how many. */
  search(words) {
    this.#words = words;
    this.#extra = null;
    this.#filter();
    const some = words.length > 0;
    this.#count.shown.textContent = some
      ? `${counted(this.#found.filter((thing) => thing.id >= 0).length)} of ${this.#count.all}`
      : this.#count.all;
    if (some && this.#found.length > 0) this.root.open = true;
    return this.#found.length;
  }

  #filter() {
    if (this.#words.length === 0) {
      this.#found = this.#order;
    } else {
      this.#texts ??= new Map(this.#things.map((thing) => [thing, this.#textOf(thing)]));
      const has = (thing) => this.#words.every((word) => this.#texts.get(thing).includes(word));
      this.#found = this.#order.filter(has);
    }
    this.#fill();
  }

  /** The texts of a thing's row, except the counts. */
  #textOf(thing) {
    const cells = this.#columns.filter(({ number }) => !number).map(({ cell }) => cell(thing));
    return cells
      .map((content) => content.textContent ?? content)
      .join('\n')
      .toLowerCase();
  }

  #row(thing) {
    const row = element('tr', { onclick: () => this.#choose(thing) });
    row.dataset.id = thing.id;
    this.#columns.forEach((column, index) => {
      const className = ['number', 'label', 'words'].find((name) => column[name]) ?? '';
      const cell = element('td', { className });
      const content = column.cell(thing);
      if (index === 0) {
        // The row's own handler does the work, so that a click on the button counts once.
        cell.append(swatch(this.#swatch(thing)), element('button', { type: 'button' }, content));
      } else {
        cell.append(content);
      }
      row.append(cell);
    });
    return row;
  }

  #fill() {
    const things = this.#found.slice(0, this.#shown);
    if (this.#extra && !things.includes(this.#extra)) things.push(this.#extra);
    this.#rows = new Map(things.map((thing) => [thing.id, this.#row(thing)]));
    this.#body.replaceChildren(...this.#rows.values());
    this.#more.hidden = this.#found.length <= this.#shown;
    this.#more.textContent = `Show all ${counted(this.#found.length)}`;
    this.#applyMarks();
  }

  #applyMarks() {
    for (const [id, row] of this.#rows) {
      row.className =
        id === this.#marks.chosen ? 'chosen' : id === this.#marks.ofFace ? 'of-face' : '';
      row.querySelector('button').setAttribute('aria-pressed', String(id === this.#marks.chosen));
    }
  }

  /**
   * Marks the row of the selected thing, or of the one that the selected face belongs to; null:
   * none.
   */
  mark(chosen, ofFace) {
    this.#marks = { chosen, ofFace };
    const id = chosen ?? ofFace;
    const isHidden = id !== null && !this.#rows.has(id);
    const extra = isHidden ? this.#things.find((thing) => thing.id === id) : null;
    if (extra) {
      this.#extra = extra;
      this.#fill();
    } else {
      this.#applyMarks();
    }
    const row = this.#rows.get(id);
    if (!row) return;
    // Scroll only the table: the page must not jump.
    const { offsetTop, offsetHeight } = row;
    const top = this.#scroll.scrollTop;
    const headHeight = this.#head.offsetHeight;
    if (offsetTop < top + headHeight) this.#scroll.scrollTop = offsetTop - headHeight;
    const below = offsetTop + offsetHeight - this.#scroll.clientHeight;
    if (below > this.#scroll.scrollTop) this.#scroll.scrollTop = below;
  }

  /** Gives rows the colours that the picture uses for them. */
  setSwatches(colourOf) {
    this.#swatch = colourOf;
    this.#fill();
  }
}
