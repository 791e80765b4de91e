// The icons of the controls: lines in a square of 16 by 16.
const kPerson =
  'M9.5 3a1.5 1.5 0 1 1-3 0a1.5 1.5 0 0 1 3 0zM8 5v5M8 10l-2.5 4.5M8 10l2.5 4.5' +
  'M4.5 8.5L8 6l3.5 2.5';
const kPaths = {
  measure: 'M1.5 11L11 1.5 14.5 5 5 14.5zM4 8.5l1.5 1.5M6.3 6.2l1.5 1.5M8.6 3.9l1.5 1.5',
  section: 'M2.5 8.5V12L8 14.5l5.5-2.5V8.5M2.5 8.5L8 11l5.5-2.5L8 6zM1 3.5h14',
  grid: 'M2 5.5h12M2 10.5h12M5.5 2v12M10.5 2v12',
  axes: 'M5 11V2M5 11h9M5 11l-3.5 3.5M3.5 3.5L5 2l1.5 1.5M12.5 9.5L14 11l-1.5 1.5',
  figure: kPerson,
  diffuse: 'M8 1.5c3 4 4.5 6 4.5 8.2a4.5 4.5 0 0 1-9 0C3.5 7.5 5 5.5 8 1.5z',
  vertex:
    'M8 4.5L3.5 12M8 4.5l4.5 7.5M4 13h8M7 3a1 1 0 1 0 2 0a1 1 0 1 0-2 0z' +
    'M2 13a1 1 0 1 0 2 0a1 1 0 1 0-2 0zM12 13a1 1 0 1 0 2 0a1 1 0 1 0-2 0z',
  material: 'M14 8a6 6 0 1 1-12 0a6 6 0 0 1 12 0zM4.5 7.5a3.5 3.5 0 0 1 3-3',
  batch: 'M2 5.5h8.5V14H2zM5.5 5.5V2H14v8.5h-3.5',
  flags: 'M4 14.5v-13M4 2.5h9l-2.5 3.2L13 9H4',
  uv: 'M2 2h12v12H2zM2 8h12M8 2v12',
  group: 'M2 2h5v5H2zM9 2h5v5H9zM2 9h5v5H2zM9 9h5v5H9z',
  orbit: 'M13.5 8a5.5 5.5 0 1 1-1.7-4M13.5 1.5V5H10',
  walk: kPerson,
  undrawn: 'M8 1.5l5.5 2v4c0 3.5-2.3 5.8-5.5 7c-3.2-1.2-5.5-3.5-5.5-7v-4z',
  planes: 'M1.5 12l4-5.5h9l-4 5.5zM8 9V2M6 4l2-2 2 2',
  edges: 'M8 2l6 11H2zM8 2v7.5M2 13l6-3.5 6 3.5',
  backs: 'M2 4h9v9H2zM5 4V2h9v9h-3M4 6l5 5M9 6l-5 5',
  textures: 'M2 2h12v12H2zM2 11l3.5-4 3 3.5 2-2L14 12M10 5.5a1 1 0 1 0 2 0a1 1 0 1 0-2 0z',
  shading: 'M2.5 2v11.5H14M2.5 9.5l4 4M2.5 5.5l8 8',
  only:
    'M1.5 8S4 3.5 8 3.5 14.5 8 14.5 8 12 12.5 8 12.5 1.5 8 1.5 8z' +
    'M10 8a2 2 0 1 1-4 0a2 2 0 0 1 4 0z',
  both: 'M2 4h8v8H2zM6 6h8v8H6z',
  a: 'M3.5 13.5L8 2.5l4.5 11M5 10h6',
  b: 'M4.5 2.5h4a2.7 2.7 0 0 1 0 5.4h-4zM4.5 7.9H9a2.8 2.8 0 0 1 0 5.6H4.5z',
  differences: 'M8 2v7M4.5 5.5h7M4.5 13h7',
  changes: 'M8 2v7M4.5 5.5h7M4.5 13h7',
  all: 'M2 6V2h4M10 2h4v4M14 10v4h-4M6 14H2v-4',
  go: 'M13 8a5 5 0 1 1-10 0a5 5 0 0 1 10 0zM8 1v4M8 11v4M1 8h4M11 8h4',
  clear: 'M3.5 3.5l9 9M12.5 3.5l-9 9',
  help:
    'M14.5 8a6.5 6.5 0 1 1-13 0a6.5 6.5 0 0 1 13 0z' +
    'M6 6.3a2 2 0 1 1 2.7 1.9c-.5.2-.7.5-.7 1.1M8 11.5v.2',
  panel: 'M2 3h12v10H2zM10 3v10',
};

/** The icon of `name`; it only goes with a text that says the same. */
export function icon(name) {
  const space = 'http://www.w3.org/2000/svg';
  const made = document.createElementNS(space, 'svg');
  made.setAttribute('viewBox', '0 0 16 16');
  made.setAttribute('aria-hidden', 'true');
  const path = document.createElementNS(space, 'path');
  path.setAttribute('d', kPaths[name]);
  made.append(path);
  return made;
}
