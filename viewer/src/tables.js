// The tables of materials, batches, surface sets and groups.
import { keywordsOf } from './colours.js';
import { fullestOf, limitsOfGroup } from './limits.js';
import { ThingTable } from './table.js';
import { counted, element, visible } from './text.js';

const faint = (text) => element('span', { className: 'faint' }, text);
const number = (title, of) => ({
  title,
  number: true,
  cell: (thing) => counted(of(thing)),
  key: of,
});

/** In a comparison, a column that says which file a thing is in. */
const lettered = (model) =>
  model.comparison
    ? [
        {
          title: 'In',
          label: true,
          cell: (thing) => thing.letter ?? '',
          key: (thing) => thing.letter ?? '',
        },
      ]
    : [];

/** The materials, and one more with id -1 when a batch has none; `triangles` counts drawn ones. */
export function materialsOf(model) {
  const triangles = new Map();
  for (const batch of model.batches) {
    triangles.set(batch.material, (triangles.get(batch.material) ?? 0) + batch.faceCount);
  }
  const materials = model.materials.map((material) =>
    Object.assign(material, { triangles: triangles.get(material.id) ?? 0 }),
  );
  if (triangles.has(-1)) materials.push({ id: -1, label: '–', triangles: triangles.get(-1) });
  return materials;
}

export const materialName = (material) =>
  material?.id >= 0 ? visible(material.name) || '(no name)' : 'no material';

function materialTable(model, materials, choose) {
  return new ThingTable(
    {
      id: 'materials',
      title: 'Materials',
      things: materials,
      open: true,
      columns: [
        {
          title: 'Material',
          cell: materialName,
          key: (material) => materialName(material).toLowerCase(),
        },
        {
          title: 'Texture',
          cell: (material) =>
            material.textureName === 'NULL' || material.id < 0
              ? faint('none')
              : visible(material.textureName),
          key: (material) => material.textureName ?? '',
        },
        ...lettered(model),
        number('Triangles', (material) => material.triangles),
      ],
    },
    choose,
  );
}

function batchTable(model, choose) {
  const name = (batch) => materialName(model.materials[batch.material]);
  return new ThingTable(
    {
      id: 'batches',
      title: 'Batches',
      things: model.batches,
      open: true,
      columns: [
        { title: 'Batch', label: true, cell: (batch) => batch.label, key: (batch) => batch.id },
        { title: 'Material', cell: name, key: (batch) => name(batch).toLowerCase() },
        number('Triangles', (batch) => batch.faceCount),
        number('Corners', (batch) => batch.cornerCount),
      ],
    },
    choose,
  );
}

function setTable(model, choose) {
  const words = (set) => keywordsOf(model, set.flags).join(', ');
  return new ThingTable(
    {
      id: 'sets',
      title: 'Surface sets',
      things: model.sets,
      open: true,
      columns: [
        { title: 'Set', label: true, cell: (set) => set.label, key: (set) => set.id },
        {
          title: 'Name',
          cell: (set) => (set.name === 'NONE' ? faint('none') : visible(set.name)),
          key: (set) => set.name,
        },
        { title: 'Flags', words: true, cell: (set) => words(set) || faint('none'), key: words },
        number('Faces', (set) => set.faceCount),
      ],
    },
    choose,
  );
}

/** The drawn triangles of a group. */
export const trianglesOf = (group) =>
  group.batches.reduce((sum, batch) => sum + batch.faceCount, 0);

function groupTable(model, choose) {
  return new ThingTable(
    {
      id: 'groups',
      title: 'Groups',
      things: model.groups,
      open: true,
      columns: [
        {
          title: 'Group',
          cell: (group) => visible(group.name) || '(no name)',
          key: (group) => group.id,
        },
        ...lettered(model),
        number('Triangles', trianglesOf),
        number('Longest list', (group) => fullestOf(limitsOfGroup(model, group)).count),
      ],
    },
    choose,
  );
}

/** The tables of a model, by kind of thing; a row calls `choose(kind, thing)`. */
export function makeTables(model, materials, choose) {
  const tables = {
    material: materialTable(model, materials, (thing) => choose('material', thing)),
    batch: batchTable(model, (thing) => choose('batch', thing)),
  };
  if (model.hasFaceTable) tables.set = setTable(model, (thing) => choose('set', thing));
  if (model.groups.length > 1) {
    tables.group = groupTable(model, (thing) => choose('group', thing));
  }
  return tables;
}
