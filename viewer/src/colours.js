// The colours of faces: those of the file, or colours that separate materials, batches, flags or
// groups, or show what changed.
import { colourOfChange } from './compare.js';

/** [r, g, b], each 0 to 255. */
function fromHsl(hue, saturation, lightness) {
  const channel = (n) => {
    const k = (n + hue / 30) % 12;
    const a = saturation * Math.min(lightness, 1 - lightness);
    return Math.round(255 * (lightness - a * Math.max(-1, Math.min(k - 3, 9 - k, 1))));
  };
  return [channel(0), channel(8), channel(4)];
}

const kNone = [150, 152, 156];

/** The colour of thing `index` among many: hues a golden angle apart, so that neighbours differ. */
export function distinct(index) {
  if (index < 0) return kNone;
  return fromHsl(
    (index * 137.508 + 205) % 360,
    [0.62, 0.45, 0.72][index % 3],
    [0.58, 0.7, 0.46][Math.floor(index / 2) % 3],
  );
}

const toByte = (channel) =>
  Number.isFinite(channel) ? Math.round(255 * Math.min(1, Math.max(0, channel))) : 0;
export const diffuseOf = (material) => material.diffuse.slice(0, 3).map(toByte);

/** The different flags of the sets, each with a colour; grey for sets without flags. */
export function flagColours(model) {
  const colours = new Map([[0, kNone]]);
  for (const set of model.sets) {
    if (!colours.has(set.flags)) colours.set(set.flags, distinct(colours.size - 1));
  }
  return colours;
}

/** The names of the keywords in `flags`; a number for unknown bits. */
export function keywordsOf(model, flags) {
  const known = model.flags.filter((flag) => flags & flag.bit);
  const rest = known.reduce((left, flag) => left & ~flag.bit, flags) >>> 0;
  return known.map((flag) => flag.keyword).concat(rest ? [`0x${rest.toString(16)}`] : []);
}

/** The colourings that the model has, in the order of their keys. */
export function colouringsOf(model) {
  const list = [
    { id: 'diffuse', name: 'Diffuse', hint: 'as the materials have them' },
    { id: 'vertex', name: 'Vertex colours', hint: 'as the corners have them' },
    { id: 'material', name: 'Materials', hint: 'a colour each' },
    { id: 'batch', name: 'Batches', hint: 'a colour each' },
  ];
  if (model.hasFaceTable) list.push({ id: 'flags', name: 'Surface flags', hint: 'a colour each' });
  list.push({
    id: 'uv',
    name: 'UV checker',
    hint: 'a checkered texture, a tile per unit',
  });
  if (model.groups.length > 1) list.push({ id: 'group', name: 'Groups', hint: 'a colour each' });
  if (model.comparison) list.push({ id: 'changes', name: 'Changes', hint: 'what A and B have' });
  return list;
}

/**
 * The initial colouring: the file's own, unless it gives most triangles the same colour and there
 * are no textures.
 */
export function firstColouring(model) {
  if (model.comparison) return 'changes';
  if (model.textures?.length > 0) return 'diffuse';
  const painted = new Map();
  let all = 0;
  for (const { material, faceCount } of model.batches) {
    const colour = model.materials[material] ? diffuseOf(model.materials[material]).join() : '';
    painted.set(colour, (painted.get(colour) ?? 0) + faceCount);
    all += faceCount;
  }
  return Math.max(0, ...painted.values()) > all / 2 ? 'material' : 'diffuse';
}

/** The colour that a colouring gives to a whole thing; null when its parts have different ones. */
export function swatchOf(model, colouring, kind, thing) {
  if (colouring === 'group') {
    if (kind === 'group') return distinct(thing.id);
    return kind === 'material' ? null : distinct(thing.group);
  }
  if (kind === 'material') {
    if (colouring === 'diffuse') return thing.diffuse ? diffuseOf(thing) : null;
    if (colouring === 'material') return distinct(thing.number ?? thing.id);
  }
  if (kind === 'batch') {
    if (colouring === 'batch') return distinct(thing.id);
    const material = model.materials[thing.material];
    if (colouring === 'diffuse') return material ? diffuseOf(material) : null;
    if (colouring === 'material') return distinct(material ? material.number : thing.material);
  }
  if (kind === 'set' && colouring === 'flags') return flagColours(model).get(thing.flags);
  return null;
}

/** Colours of what changed, 4 bytes for each of a mesh's `corners`; `same` as colourOfChange. */
export function changeCorners({ change }, corners, same) {
  const colours = new Uint8Array(4 * corners.count).fill(255);
  for (let i = 0; i < corners.count; ++i) {
    colours.set(colourOfChange(change[corners.entry[i]], same), 4 * i);
  }
  return colours;
}

/** The colours of the drawn faces' mesh, 4 bytes for each of its `corners`. */
export function colourCorners(model, faces, corners, colouring) {
  if (colouring === 'changes') return changeCorners(faces, corners);
  const colours = new Uint8Array(4 * corners.count).fill(255);
  if (colouring === 'uv') return colours;
  const ofBatch = model.batches.map((batch) => swatchOf(model, colouring, 'batch', batch));
  const ofFlags = flagColours(model);
  for (let i = 0; i < corners.count; ++i) {
    const entry = corners.entry[i];
    const batch = faces.batch[entry];
    const set = model.sets[faces.set[entry]];
    const whole = colouring === 'flags' ? (set ? ofFlags.get(set.flags) : kNone) : ofBatch[batch];
    const own = 4 * corners.corner[i];
    for (let channel = 0; channel < 3; ++channel) {
      colours[4 * i + channel] = whole
        ? whole[channel]
        : model.batches[batch].colours[own + channel];
    }
  }
  return colours;
}
