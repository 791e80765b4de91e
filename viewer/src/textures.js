// The textures of the level: images from the page's own block, and the faces in their order.
import {
  LinearFilter,
  LinearMipmapLinearFilter,
  MeshLambertMaterial,
  RepeatWrapping,
  Texture,
} from 'three';

/** Whether an image has alphas below the full one, and whether many are in between. */
function alphasOf(image) {
  const canvas = new OffscreenCanvas(image.width, image.height);
  const context = canvas.getContext('2d', { willReadFrequently: true });
  context.drawImage(image, 0, 0);
  const { data } = context.getImageData(0, 0, image.width, image.height);
  let clear = 0;
  let between = 0;
  for (let at = 3; at < data.length; at += 4) {
    if (data[at] < 255) ++clear;
    if (data[at] > 15 && data[at] < 240) ++between;
  }
  return { hasAlpha: clear > 0, isBlended: between > data.length / 4 / 8 };
}

/** A texture of the PNG file `bytes`; nothing is fetched. */
async function decode(bytes) {
  const image = await createImageBitmap(new Blob([bytes], { type: 'image/png' }), {
    premultiplyAlpha: 'none',
    colorSpaceConversion: 'none',
  });
  const texture = new Texture(image);
  Object.assign(texture, {
    flipY: false, // the first row is at v = 0
    wrapS: RepeatWrapping,
    wrapT: RepeatWrapping,
    magFilter: LinearFilter,
    minFilter: LinearMipmapLinearFilter,
    anisotropy: 4,
    needsUpdate: true,
  });
  return { texture, ...alphasOf(image) };
}

export class LevelTextures {
  #model;
  #faces;
  /** Whether faces are to be drawn with their textures. */
  shown = false;
  /** One for each texture of the model. */
  materials;

  /**
   * `ready` is called when an image is decoded, with the number of those that are left; until then
   * its faces are white.
   */
  constructor(model, faces, options, ready) {
    this.#model = model;
    this.#faces = faces;
    const images = model.textures ?? [];
    this.materials = images.map(() => new MeshLambertMaterial(options));
    let left = images.length;
    const load = async (bytes, index) => {
      const { texture, hasAlpha, isBlended } = await decode(bytes);
      const material = this.materials[index];
      material.map = texture;
      // Blended, too: from afar, where alphas are means, a fence would be left out or solid.
      if (hasAlpha && !isBlended) Object.assign(material, { transparent: true, alphaTest: 0.1 });
      if (isBlended) Object.assign(material, { transparent: true, depthWrite: false });
      material.needsUpdate = true;
      ready(--left);
    };
    images.forEach(load);
  }

  /** Whether the colours of the corners darken the textures. */
  setVertexColours(on) {
    for (const material of this.materials) {
      if (material.vertexColors === on) continue;
      material.vertexColors = on;
      material.needsUpdate = true;
    }
  }

  /**
   * The faces of `index` (all, or those of `entries`) in the order of their textures: `index` and
   * `groups`, of which each is start, count, and the place of its material behind that without.
   */
  order(index, entries) {
    const { batches, textureOf } = this.#model;
    const count = index.length / 3;
    const ofBatch = batches.map(({ material }) => (textureOf[material] ?? -1) + 1);
    const places = new Uint32Array(this.materials.length + 2);
    const textureAt = (i) => ofBatch[this.#faces.batch[entries ? entries[i] : i]] ?? 0;
    for (let i = 0; i < count; ++i) ++places[textureAt(i) + 1];
    for (let i = 1; i < places.length; ++i) places[i] += places[i - 1];
    const groups = [];
    for (let i = 0; i + 1 < places.length; ++i) {
      const size = places[i + 1] - places[i];
      if (size > 0) groups.push([3 * places[i], 3 * size, i]);
    }
    const ordered = new Uint32Array(index.length);
    for (let i = 0; i < count; ++i) {
      ordered.set(index.subarray(3 * i, 3 * i + 3), 3 * places[textureAt(i)]++);
    }
    return { index: ordered, groups };
  }
}
