// How close each list is to the limit of 16-bit indices.
import { counted, element } from './text.js';

/**
 * The lists that 16-bit indices refer to, the longest of each kind, and what goes wrong when one is
 * too long.
 */
export function limitsOf(model) {
  const limit = (name, things, count, trouble) => ({
    name,
    count: things.reduce((most, thing) => Math.max(most, count(thing)), 0),
    trouble,
  });
  const limits = [
    limit(
      'Vertices',
      model.groups,
      (group) => group.vertices.length / 3,
      'triangles with later vertices are torn, as the file has them',
    ),
    limit(
      'Corners of the largest batch',
      model.batches,
      (batch) => batch.cornerCount,
      'later corners have the normals, colours and texture coordinates of others',
    ),
  ];
  if (!model.hasFaceTable) return limits;
  return limits.concat([
    limit(
      'Faces of the largest batch',
      model.batches,
      (batch) => batch.faceCount,
      'which row of the face table means which of its faces is a guess',
    ),
    limit(
      'Collision points',
      model.groups,
      (group) => group.points.length / 3,
      'collision faces with later points are torn, as the file has them',
    ),
    limit(
      'Faces',
      model.groups,
      (group) => group.faces.faceCount,
      "the lists of the surface sets can't name later faces; this page uses the face table",
    ),
  ]);
}

/** The same of one group. */
export const limitsOfGroup = (model, group) =>
  limitsOf({ ...model, groups: [group], batches: group.batches });

/** The limit of which most is used. */
export const fullestOf = (limits) =>
  limits.reduce((fullest, limit) => (limit.count > fullest.count ? limit : fullest));

function percentage(share) {
  if (share > 0 && share < 0.001) return 'below 0.1 %';
  return `${(100 * share).toFixed(1)} %`;
}

/** "1,000 of 65,536 (1.5 %)" */
export function shareOf(model, count) {
  const excess = count - model.indexLimit;
  return `${counted(count)} of ${counted(model.indexLimit)} (${percentage(
    count / model.indexLimit,
  )})${excess > 0 ? `, ${counted(excess)} too many` : ''}`;
}

/** A bar for each limit. */
export function limitBars(model) {
  return limitsOf(model).map(({ name, count }) => {
    const share = count / model.indexLimit;
    const over = count > model.indexLimit;
    const value = shareOf(model, count);
    const fill = element('div', { className: 'fill' });
    fill.style.width = `${100 * Math.min(1, share)}%`;
    return element(
      'div',
      { className: `limit${over ? ' over' : share > 0.9 ? ' near' : ''}` },
      element(
        'div',
        { className: 'text' },
        element('span', {}, name),
        element('span', { className: 'value' }, value),
      ),
      element(
        'div',
        {
          className: 'track',
          role: 'meter',
          'aria-label': name,
          'aria-valuemin': '0',
          'aria-valuemax': String(model.indexLimit),
          'aria-valuenow': String(Math.min(count, model.indexLimit)),
          'aria-valuetext': value,
        },
        fill,
      ),
    );
  });
}
