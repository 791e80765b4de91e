// The comparison with a second model: reads what src/view/ViewComparison.cpp wrote, makes one model
// of both, and tells which faces are shown.
import { counted, element, visible } from './text.js';

// What a face is: `change` of listFaces' lists.
const kSameInA = 0;
const kOnlyInA = 1;
const kSameInB = 2;
const kOnlyInB = 3;

/** The choices of what is shown, each with the changes that belong to it. */
export const kShown = [
  // What is the same is drawn once.
  { id: 'both', name: 'Both', key: 'v', hint: 'A and B', changes: [kSameInA, kOnlyInA, kOnlyInB] },
  { id: 'a', name: 'Only A', key: 'j', side: 0, changes: [kSameInA, kOnlyInA] },
  { id: 'b', name: 'Only B', key: 'k', side: 1, changes: [kSameInB, kOnlyInB] },
  {
    id: 'differences',
    name: 'Differences',
    key: 'n',
    hint: 'what only one of A and B has',
    changes: [kOnlyInA, kOnlyInB],
  },
];

/** The same choices; those of one file have its name as `hint`. */
export const choicesOf = ({ fileNames }) =>
  kShown.map((each) => ({ hint: visible(fileNames[each.side] ?? ''), ...each }));

// Red and blue: also different to those who can't tell red from green.
const kColours = new Map([
  [kSameInA, [172, 174, 178]],
  [kSameInB, [172, 174, 178]],
  [kOnlyInA, [216, 58, 44]],
  [kOnlyInB, [22, 112, 214]],
]);

export function readComparison(reader) {
  const headline = reader.text();
  const tables = reader.list(() => {
    const title = reader.text();
    const columns = reader.list(() => ({ title: reader.text(), number: reader.u32() === 1 }));
    const rows = reader.list(() => columns.map(() => reader.text()));
    return { title, columns, rows, more: reader.u32() };
  });
  const materials = reader.list(() => [reader.i32(), reader.i32()]);
  const marks = () => reader.numbers(Uint8Array, reader.u32());
  const sides = [0, 1].map(() => ({ drawn: marks(), undrawn: marks() }));
  return { headline, tables, materials, sides };
}

/** One model of two: the materials and groups of the first, then those of the second. */
export function mergeModels(first, second, comparison) {
  const offset = first.materials.length;
  for (const { batches } of second.groups) {
    for (const batch of batches) if (batch.material >= 0) batch.material += offset;
  }
  const materials = [...first.materials, ...second.materials];
  materials.forEach((material, id) => {
    Object.assign(material, { id, letter: id < offset ? 'A' : 'B' });
  });
  // The same material has the same colour in both.
  comparison.materials.forEach(([a, b], number) => {
    if (a >= 0) materials[a].number = number;
    if (b >= 0) materials[offset + b].number = number;
  });
  return {
    ...first,
    hasFaceTable: first.hasFaceTable || second.hasFaceTable,
    materials,
    groups: [...first.groups, ...second.groups],
    comparison: { ...comparison, fileNames: [first.fileName, second.fileName] },
  };
}

/** The `change` of each drawn or undrawn face of a comparison. */
export function changesOf({ sides: [a, b] }, kind) {
  const changes = new Uint8Array(a[kind].length + b[kind].length);
  a[kind].forEach((mark, entry) => (changes[entry] = mark ? kOnlyInA : kSameInA));
  b[kind].forEach((mark, entry) => (changes[a[kind].length + entry] = mark ? kOnlyInB : kSameInB));
  return changes;
}

const hasChange = ({ change }) => change.some((each) => each === kOnlyInA || each === kOnlyInB);

/** Whether all faces of a comparison that differ are collision faces. */
export const onlyCollisionDiffers = ({ drawn, undrawn }) =>
  Boolean(undrawn.change) && hasChange(undrawn) && !hasChange(drawn);

/** The colour of a face; `same` is that of faces that both files have. */
export const colourOfChange = (change, same = null) =>
  change === kOnlyInA || change === kOnlyInB
    ? kColours.get(change)
    : (same ?? kColours.get(change));

/** The entries of the legend: how many faces, drawn or not, are where. */
export function changeLegend({ fileNames }, faces) {
  const sizes = new Map();
  for (const { change } of Object.values(faces)) {
    for (const each of change) sizes.set(each, (sizes.get(each) ?? 0) + 1);
  }
  return [
    ['only in A', kOnlyInA, fileNames[0]],
    ['only in B', kOnlyInB, fileNames[1]],
    ['in both', kSameInA, fileNames.join(', ')],
  ].map(([what, change, files]) => {
    const size = sizes.get(change) ?? 0;
    const name = `${what}: ${counted(size)}`;
    return { name, size, title: visible(files), colour: colourOfChange(change) };
  });
}

const kMarks = { '-': 'only in A', '+': 'only in B', '~': 'in both, changed' };

/** A table of `diff`. The texts of its last column are long, so each gets a row of its own. */
function differenceTable({ title, columns, rows, more }) {
  const hasTexts = !columns.at(-1).number && columns.length > 3;
  const short = hasTexts ? columns.slice(0, -1) : columns;
  const cell = (tag, text, { number }) =>
    element(tag, { className: number ? 'number' : '' }, visible(text));
  const body = element('tbody');
  for (const row of rows) {
    const cells = short.map((column, index) => cell('td', row[index], column));
    if (kMarks[row[0]]) cells[0].title = kMarks[row[0]];
    body.append(element('tr', {}, ...cells));
    const text = hasTexts ? row.at(-1) : '';
    if (text) {
      const long = element('td', { colSpan: short.length - 1 }, visible(text));
      body.append(element('tr', { className: 'change' }, element('td'), long));
    }
  }
  const head = element('tr', {}, ...short.map((column) => cell('th', column.title, column)));
  return [
    title ? element('h3', {}, title) : '',
    element('div', { className: 'scroll' }, element('table', {}, element('thead', {}, head), body)),
    more > 0 ? element('p', { className: 'faint' }, `... and ${counted(more)} more`) : '',
  ];
}

/** What `diff` says of the two files, as the children of its section. */
export const differenceOf = ({ headline, tables, fileNames }) => [
  element('h2', {}, headline),
  ...fileNames.map((name, side) => element('p', {}, `${'AB'[side]}: ${visible(name)}`)),
  ...tables.flatMap(differenceTable),
];
