// The choices above the tables, each with its key.
import { choicesOf } from './compare.js';
import { systemNames } from './coordinates.js';
import { icon } from './icons.js';
import { element } from './text.js';

const kModes = [
  { id: 'orbit', name: 'Orbit', key: 'o' },
  { id: 'walk', name: 'Walk', key: 'g', hint: 'stands on the floor in the middle of the picture' },
];

const kParts = [
  { id: 'undrawn', name: 'Collision', key: 'c', collision: true, hint: 'faces that only collide' },
  { id: 'planes', name: 'Planes', key: 'p', collision: true, hint: 'those of the collision faces' },
  { id: 'edges', name: 'Edges', key: 'l' },
  { id: 'backs', name: 'Back sides', key: 'b' },
  { id: 'only', name: 'Only selected', key: 'x' },
  { id: 'textures', name: 'Textures', key: 't', textured: true },
  { id: 'shading', name: 'Contact shading', key: '.', hint: 'darkens corners' },
];

const kTools = [
  { id: 'measure', name: 'Measure', key: 'm', hint: 'two clicks give a distance' },
  { id: 'section', name: 'Section', key: 'y', hint: 'cuts the level open' },
  { id: 'grid', name: 'Grid', key: 'r' },
  { id: 'axes', name: 'Axes', key: 'i', hint: 'those of the file' },
  { id: 'figure', name: 'Figure', key: 'u', hint: 'as tall as a person' },
];

const kMovement = [
  ['Drag, arrow keys', 'turn around the level; walking, look around'],
  ['Right drag, Shift drag, Shift+arrows', 'shift the picture'],
  ['Wheel, pinch, + and −', 'nearer, further'],
  ['W A S D', 'move ahead, left, back, right; with Shift faster'],
  ['E, Q, Page Up, Page Down', 'move up, down'],
  ['Click, Enter', 'select the face under the pointer, in the middle'],
];

/** Radio buttons or check boxes that look like a group of buttons. */
function tools(parent, type, group, entries, changed) {
  const inputs = new Map();
  const box = element('div', { className: 'tools' });
  parent.append(box);
  for (const { id, name, key, hint } of entries) {
    const input = element('input', {
      type,
      name: group,
      value: id,
      onchange: () => changed(id, input.checked),
    });
    const title = `${hint ? `${hint}; ` : ''}key ${key.toUpperCase()}`;
    box.append(
      element('label', { className: 'tool', title }, input, element('span', {}, icon(id), name)),
    );
    inputs.set(id, input);
  }
  return inputs;
}

/**
 * Makes the controls of `model`; `hasCollision` says whether it has faces that only collide.
 * `calls` receives changes: compare(id), colouring(id), mode(id), part(id, on), system(id),
 * panel(on), frameAll(), goToChosen(), clear(). The returned object sets the same things from code,
 * and handles the keys.
 */
export function makeControls(model, hasCollision, colourings, calls) {
  const find = (id) => document.getElementById(id);
  const parts = kParts.filter(
    (part) => (!part.collision || hasCollision) && (!part.textured || model.textures?.length > 0),
  );
  const keyed = colourings.map((colouring, index) => ({ ...colouring, key: String(index + 1) }));
  const shown = model.comparison ? choicesOf(model.comparison) : [];
  find('compare').hidden = shown.length === 0;
  const inputs = {
    compare: tools(find('compare'), 'radio', 'compare', shown, calls.compare),
    colouring: tools(find('colourings'), 'radio', 'colouring', keyed, calls.colouring),
    mode: tools(find('modes'), 'radio', 'mode', kModes, calls.mode),
    part: tools(find('parts'), 'checkbox', 'part', parts, calls.part),
  };
  for (const entry of tools(find('tools'), 'checkbox', 'part', kTools, calls.part)) {
    inputs.part.set(...entry);
  }
  const set = (kind, id, on = true) => {
    if (kind === 'system') {
      find('system').value = String(id);
      calls.system(id);
      return;
    }
    const input = inputs[kind].get(id);
    if (!input) return;
    input.checked = on;
    calls[kind](id, on);
  };

  const system = find('system');
  systemNames.forEach((name, index) =>
    system.append(element('option', { value: String(index) }, name)),
  );
  system.value = String(model.coordinateSystem);
  system.onchange = () => calls.system(system.value);
  const icons = {
    'frame-all': 'all',
    'go-to-chosen': 'go',
    clear: 'clear',
    'show-help': 'help',
    'show-panel': 'panel',
  };
  for (const [id, name] of Object.entries(icons)) find(id).prepend(icon(name));
  find('frame-all').onclick = calls.frameAll;
  find('go-to-chosen').onclick = calls.goToChosen;
  find('clear').onclick = calls.clear;
  find('controls').onsubmit = (event) => event.preventDefault();

  const help = find('help');
  const showHelp = () => help.showModal();
  find('show-help').onclick = showHelp;
  find('close-help').onclick = () => help.close();
  const panel = find('show-panel');
  const switchPanel = () => {
    const on = panel.getAttribute('aria-expanded') === 'false';
    panel.setAttribute('aria-expanded', String(on));
    calls.panel(on);
  };
  panel.onclick = switchPanel;

  const search = () => {
    if (find('panel').hidden) switchPanel();
    find('search').focus();
  };

  const keys = new Map([
    ['?', showHelp],
    ['h', switchPanel],
    ['/', search],
    ['f', calls.frameAll],
    ['z', calls.goToChosen],
    ['escape', calls.clear],
  ]);
  for (const { id, key } of keyed) keys.set(key, () => set('colouring', id));
  for (const { id, key } of shown) keys.set(key, () => set('compare', id));
  for (const { id, key } of kModes) keys.set(key, () => set('mode', id));
  for (const { id, key } of [...parts, ...kTools])
    keys.set(key, () => set('part', id, !inputs.part.get(id).checked));

  const rows = [
    ...kMovement,
    ['?', 'these keys'],
    ['H', 'hide or show the panel'],
    ['/', 'search the tables'],
    ['F', 'show the whole level'],
    ['Z', 'go to the selection'],
    ['Escape', 'end measuring, or clear the selection'],
    ...keyed.map(({ key, name }) => [key, `colour by: ${name}`]),
    ...shown.map(({ key, name, hint }) => [
      key.toUpperCase(),
      `compare: ${name[0].toLowerCase()}${name.slice(1)}${hint ? `, ${hint}` : ''}`,
    ]),
    ...[...kModes, ...parts, ...kTools].map(({ key, name, hint }) => [
      key.toUpperCase(),
      `${name.toLowerCase()}${hint ? `: ${hint}` : ''}`,
    ]),
  ];
  for (const [key, what] of rows) {
    find('keys').append(element('dt', {}, element('kbd', {}, key)), element('dd', {}, what));
  }
  return {
    set,
    press: (key) => {
      const act = keys.get(key.toLowerCase());
      act?.();
      return Boolean(act);
    },
    enableChosen: (enabled) => {
      find('go-to-chosen').disabled = find('clear').disabled = !enabled;
    },
  };
}
