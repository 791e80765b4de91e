// What the graphics card gets of a mesh that placeMesh made.
import { BufferAttribute } from 'three';

/** Whether rendering is done in software; antialiasing is too slow then. */
export function drawsInSoftware() {
  const context = document.createElement('canvas').getContext('webgl2');
  const names = context?.getExtension('WEBGL_debug_renderer_info');
  const name = names ? context.getParameter(names.UNMASKED_RENDERER_WEBGL) : '';
  context?.getExtension('WEBGL_lose_context')?.loseContext();
  return /swiftshader|llvmpipe|software|basic render/i.test(name);
}

export function setVertices(geometry, mesh) {
  geometry.setAttribute('position', new BufferAttribute(mesh.positions, 3));
  geometry.setAttribute('normal', new BufferAttribute(mesh.normals, 4, true));
  if (mesh.uvs) geometry.setAttribute('uv', new BufferAttribute(mesh.uvs, 2));
}

/** The part of a mesh's index for some faces. */
export function indexOfFaces(mesh, entries) {
  const index = new Uint32Array(3 * entries.length);
  entries.forEach((entry, i) => index.set(mesh.index.subarray(3 * entry, 3 * entry + 3), 3 * i));
  return index;
}

/** The faces of a mesh whose `change` is among those that are `wanted`; all without these. */
export function visibleFaces({ shown, index }, change, wanted) {
  if (!wanted || !change) return { visible: shown, visibleIndex: index };
  const visible = shown.map((is, entry) => is && wanted.includes(change[entry]));
  return { visible, visibleIndex: index.filter((_, at) => visible[Math.floor(at / 3)]) };
}

/**
 * The parts of an index in which all faces of A come before those of B: of each start, count, and
 * the place of its material, 1 for A. What is no comparison counts as B.
 */
export function groupsOfModels(index, { entry }, { firstOfB = 0 }) {
  const begin = index.findIndex((at) => entry[at] >= firstOfB);
  const ofA = begin < 0 ? index.length : begin;
  return [
    [0, ofA, 1],
    [ofA, index.length - ofA, 0],
  ].filter(([, count]) => count > 0);
}

/** Frees what the card holds of all in `scene`, and of `materials`; drawing makes it anew. */
export function free(scene, materials = []) {
  const all = new Set(materials);
  scene.traverse(({ geometry, material }) => {
    geometry?.dispose();
    for (const each of [material ?? []].flat()) all.add(each);
  });
  for (const material of all) {
    material.map?.dispose();
    material.dispose();
  }
}
