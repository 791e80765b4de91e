// What the colours of a colouring mean.
import { colouringsOf, flagColours, keywordsOf, swatchOf } from './colours.js';
import { changeLegend } from './compare.js';
import { materialName, trianglesOf } from './tables.js';
import { counted, element, swatch, visible } from './text.js';

const kMost = 40; // entries; the tables have all

/** The things that a colouring gives a colour each, the largest first. */
function entriesOf(model, materials, faces, colouring) {
  const entry = (kind, thing, name, size) => ({
    name,
    size,
    colour: swatchOf(model, colouring, kind, thing),
    choice: [kind, thing],
  });
  switch (colouring) {
    case 'diffuse':
    case 'material':
      return materials.map((thing) =>
        entry('material', thing, materialName(thing), thing.triangles),
      );
    case 'batch':
      return model.batches.map((thing) => entry('batch', thing, thing.label, thing.faceCount));
    case 'group':
      return model.groups.map((thing) =>
        entry('group', thing, visible(thing.name) || '(no name)', trianglesOf(thing)),
      );
    case 'flags': {
      const sizes = new Map();
      for (const index of faces.drawn.set) {
        const flags = model.sets[index]?.flags ?? 0;
        sizes.set(flags, (sizes.get(flags) ?? 0) + 1);
      }
      const colours = flagColours(model);
      return [...sizes].map(([flags, size]) => ({
        name: keywordsOf(model, flags).join(', ') || 'no flags',
        size,
        colour: colours.get(flags),
      }));
    }
    case 'changes':
      return changeLegend(model.comparison, faces);
    default:
      return [];
  }
}

/** The children of the legend's element; a click on a thing calls `choose(kind, thing)`. */
export function legendOf(model, materials, faces, colouring, choose) {
  const entries = entriesOf(model, materials, faces, colouring).filter(({ size }) => size > 0);
  if (entries.length === 0) {
    const { hint } = colouringsOf(model).find(({ id }) => id === colouring);
    return [element('p', { className: 'faint' }, hint)];
  }
  entries.sort((a, b) => b.size - a.size);
  const list = element(
    'ul',
    {},
    ...entries.slice(0, kMost).map(({ name, size, colour, choice, title }) => {
      return element(
        'li',
        { title: title ?? `${counted(size)} of the triangles` },
        swatch(colour),
        choice
          ? element('button', { type: 'button', onclick: () => choose(...choice) }, name)
          : element('span', {}, name),
      );
    }),
  );
  const rest = entries.length - kMost;
  if (rest > 0) list.append(element('li', { className: 'faint' }, `and ${counted(rest)} more`));
  return [list];
}
