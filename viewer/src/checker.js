// The texture that shows how texture coordinates are laid out on the level.
import { DataTexture, LinearFilter, LinearMipmapLinearFilter, RepeatWrapping } from 'three';

const kTile = 64; // pixels across

/**
 * A tile of 8 by 8 squares; one corner is marked, so that turned and mirrored tiles are visible.
 */
export function checkerTexture() {
  const pixels = new Uint8Array(4 * kTile * kTile);
  for (let y = 0; y < kTile; ++y) {
    for (let x = 0; x < kTile; ++x) {
      const dark = ((x >> 3) + (y >> 3)) % 2 === 1;
      const corner = x < 16 && y < 16 && x + y < 24;
      const border = x === 0 || y === 0;
      let colour = dark ? [150, 156, 164] : [226, 229, 233];
      if (border) colour = [40, 90, 160];
      if (corner) colour = [214, 96, 60];
      pixels.set([...colour, 255], 4 * (y * kTile + x));
    }
  }
  const texture = new DataTexture(pixels, kTile, kTile);
  Object.assign(texture, {
    wrapS: RepeatWrapping,
    wrapT: RepeatWrapping,
    generateMipmaps: true,
    magFilter: LinearFilter,
    minFilter: LinearMipmapLinearFilter,
    anisotropy: 4,
    needsUpdate: true,
  });
  return texture;
}
