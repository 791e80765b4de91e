// Reads the block that src/view/ModelBlock.cpp wrote.
import { mergeModels, readComparison } from './compare.js';

/** Reads items one after the other; lists are views of the block, not copies. */
class BlockReader {
  #bytes;
  #view;
  #at = 0;

  constructor(bytes) {
    this.#bytes = bytes;
    this.#view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  }

  /** The position of the next `size` bytes; skips them, to a multiple of 4. */
  #take(size) {
    const at = this.#at;
    this.#at = Math.ceil((at + size) / 4) * 4;
    return at;
  }

  u32() {
    return this.#view.getUint32(this.#take(4), true);
  }
  i32() {
    return this.#view.getInt32(this.#take(4), true);
  }
  f32() {
    return this.#view.getFloat32(this.#take(4), true);
  }

  bytes() {
    const size = this.u32();
    const at = this.#take(size);
    return this.#bytes.subarray(at, at + size);
  }

  text() {
    return new TextDecoder().decode(this.bytes());
  }

  /**
   * A list of `count` numbers in the typed array `Kind`; all machines with browsers are
   * little-endian.
   */
  numbers(Kind, count) {
    const at = this.#take(count * Kind.BYTES_PER_ELEMENT);
    return new Kind(this.#bytes.buffer, this.#bytes.byteOffset + at, count);
  }

  list(readEntry) {
    return Array.from({ length: this.u32() }, (_, index) => readEntry(index));
  }
}

function readMaterial(reader, index) {
  const colour = () => Array.from({ length: 4 }, () => reader.f32());
  return {
    id: index,
    label: `${index}`,
    number: index, // for its colour
    name: reader.text(),
    textureName: reader.text(),
    scalars: [reader.f32(), reader.f32(), reader.f32()],
    modeValue: reader.i32(),
    ambient: colour(),
    diffuse: colour(),
    specular: colour(),
    twoSided: reader.u32() !== 0,
  };
}

function readBatch(reader) {
  const material = reader.i32();
  const faceCount = reader.u32();
  const planes = reader.numbers(Float32Array, 4 * faceCount);
  const indices = reader.numbers(Uint16Array, 6 * faceCount); // three vertices, three corners each
  const cornerCount = reader.u32();
  return {
    material,
    faceCount,
    planes,
    indices,
    cornerCount,
    normals: reader.numbers(Int8Array, 4 * cornerCount), // the fourth is padding
    uvs: reader.numbers(Float32Array, 2 * cornerCount),
    colours: reader.numbers(Uint8Array, 4 * cornerCount),
  };
}

function readFaceTable(reader) {
  const faceCount = reader.u32();
  const bytes = reader.numbers(Uint8Array, 16 * faceCount);
  const at = bytes.byteOffset;
  return {
    faceCount,
    shorts: new Uint16Array(bytes.buffer, at, 8 * faceCount), // vertices and position, 8 a face
    words: new Int32Array(bytes.buffer, at, 4 * faceCount), // set and batch are words 2 and 3
  };
}

function readGroup(reader, hasFaceTable) {
  const group = {
    name: reader.text(),
    vertices: reader.numbers(Float32Array, 3 * reader.u32()),
    batches: reader.list(() => readBatch(reader)),
    points: new Float32Array(0),
    planes: new Float32Array(0),
    faces: { faceCount: 0 },
    sets: [],
  };
  if (!hasFaceTable) return group;
  group.points = reader.numbers(Float32Array, 3 * reader.u32());
  group.planes = reader.numbers(Float32Array, 4 * reader.u32());
  group.faces = readFaceTable(reader);
  group.sets = reader.list(() => ({
    name: reader.text(),
    flags: reader.u32(),
    faceCount: reader.u32(),
  }));
  return group;
}

/**
 * Batches or sets of all groups in one list: `id` is the index in it, `index` that in the group.
 */
function flatten(groups, member) {
  const list = groups.flatMap((group, groupIndex) =>
    group[member].map((entry, index) =>
      Object.assign(entry, { group: groupIndex, index, label: `${group.start}${index}` }),
    ),
  );
  list.forEach((entry, id) => {
    entry.id = id;
  });
  return list;
}

/** Gives the groups of one file, of that `letter` in a comparison, what their labels begin with. */
function startLabels(groups, letter) {
  groups.forEach((group, id) => {
    group.letter = letter;
    group.start = `${letter && `${letter} `}${groups.length > 1 ? `${id}/` : ''}`;
  });
}

function readBlock(reader, letter = '') {
  const fileName = reader.text();
  const hasFaceTable = reader.u32() === 1;
  const model = {
    fileName,
    hasFaceTable,
    coordinateSystem: reader.i32(),
    indexLimit: reader.u32(),
    flags: reader.list(() => ({ bit: reader.u32(), keyword: reader.text() })),
    materials: reader.list((index) => readMaterial(reader, index)),
    groups: reader.list(() => readGroup(reader, hasFaceTable)),
    textures: null, // the bytes of PNG files; null: none were asked for
    textureOf: [], // by material, -1 for none
    comparison: null,
  };
  if (reader.u32() === 1) {
    model.textures = reader.list(() => reader.bytes());
    model.textureOf = model.materials.map(() => reader.i32());
  }
  const isCompared = reader.u32() === 1;
  startLabels(model.groups, isCompared ? 'A' : letter);
  if (!isCompared) return model;
  const comparison = readComparison(reader);
  return mergeModels(model, readBlock(reader, 'B'), comparison);
}

/**
 * The model in a block: as docs/inspect-json.md describes it, in typed arrays. Of a comparison,
 * both models as one.
 */
export function readModel(bytes) {
  const model = readBlock(new BlockReader(bytes));
  model.batches = flatten(model.groups, 'batches');
  model.sets = flatten(model.groups, 'sets');
  model.groups.forEach((group, id) => Object.assign(group, { id, label: `${id}` }));
  return model;
}

export function decodeBase64(text) {
  if (Uint8Array.fromBase64) return Uint8Array.fromBase64(text);
  const raw = atob(text);
  const bytes = new Uint8Array(raw.length);
  for (let i = 0; i < raw.length; ++i) bytes[i] = raw.charCodeAt(i);
  return bytes;
}
