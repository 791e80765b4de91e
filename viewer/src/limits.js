// How near the model comes to what 16-bit indices can address.
import { counted, element } from './text.js';

/** The lists that indices of 16 bits point into; of several groups or batches, the longest. */
export function limitsOf(model) {
  const longest = (counts) => counts.reduce((most, count) => Math.max(most, count), 0);
  const limits = [
    { name: 'Vertices', count: longest(model.groups.map((group) => group.vertices.length / 3)) },
    { name: 'Corners of the largest batch', count: longest(model.batches.map((batch) => batch.cornerCount)) },
  ];
  if (!model.hasFaceTable) return limits;
  return limits.concat([
    { name: 'Faces of the largest batch', count: longest(model.batches.map((batch) => batch.faceCount)) },
    { name: 'Collision points', count: longest(model.groups.map((group) => group.points.length / 3)) },
    { name: 'Faces', count: longest(model.groups.map((group) => group.faces.faceCount)) },
  ]);
}

function percentage(share) {
  if (share > 0 && share < 0.001) return 'below 0.1 %';
  return `${(100 * share).toFixed(1)} %`;
}

/** A bar for each limit. */
export function limitBars(model) {
  return limitsOf(model).map(({ name, count }) => {
    const share = count / model.indexLimit;
    const over = count > model.indexLimit;
    const value = `${counted(count)} of ${counted(model.indexLimit)} (${percentage(share)})${
      over ? `, ${counted(count - model.indexLimit)} too many` : ''}`;
    const fill = element('div', { className: 'fill' });
    fill.style.width = `${100 * Math.min(1, share)}%`;
    return element('div', { className: `limit${over ? ' over' : share > 0.9 ? ' near' : ''}` },
      element('div', { className: 'text' }, element('span', {}, name),
        element('span', { className: 'value' }, value)),
      element('div', {
        className: 'track', role: 'meter', 'aria-label': name, 'aria-valuemin': '0',
        'aria-valuemax': String(model.indexLimit), 'aria-valuenow': String(Math.min(count, model.indexLimit)),
        'aria-valuetext': value,
      }, fill));
  });
}
