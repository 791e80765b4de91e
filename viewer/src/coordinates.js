// Turns the file's coordinates upright: y up, right-handed, like the scene before the export.

// For each of the export's four coordinate systems: the sources of the page's x, y and z, with
// signs.
const kSystems = [
  { name: 'Left-handed', axes: [2, 1, 0], signs: [-1, 1, -1], normalSign: 1 },
  { name: 'Right-handed', axes: [1, 2, 0], signs: [1, 1, 1], normalSign: -1 },
  { name: 'Max', axes: [0, 2, 1], signs: [1, 1, -1], normalSign: -1 },
  { name: 'Inverse Max', axes: [0, 2, 1], signs: [-1, 1, -1], normalSign: 1 },
];

export const systemNames = kSystems.map((system) => system.name);

/**
 * The exporter reverses the corners of every face. When the system mirrors, normals nevertheless
 * point outwards; otherwise they point into the solid, and `normalSign` is -1.
 */
export function coordinateSystem(index) {
  return kSystems[index] ?? kSystems[0];
}

/** The bounding box of most of `values` (x, y, z each), in the file's axes, and that of all. */
function boxes(lists) {
  const samples = [[], [], []];
  const least = [Infinity, Infinity, Infinity];
  const most = [-Infinity, -Infinity, -Infinity];
  const total = lists.reduce((sum, list) => sum + list.length / 3, 0);
  const step = Math.max(1, Math.floor(total / 20000));
  for (const list of lists) {
    for (let i = 0; i + 2 < list.length; i += 3) {
      if (!Number.isFinite(list[i] + list[i + 1] + list[i + 2])) continue;
      for (let axis = 0; axis < 3; ++axis) {
        const value = list[i + axis];
        if (value < least[axis]) least[axis] = value;
        if (value > most[axis]) most[axis] = value;
        if ((i / 3) % step === 0) samples[axis].push(value);
      }
    }
  }
  const part = (axis, share) => {
    const sorted = samples[axis].sort((a, b) => a - b);
    return sorted[Math.round(share * (sorted.length - 1))];
  };
  const axes = [0, 1, 2];
  return {
    all: { least, most },
    main: {
      least: axes.map((axis) => part(axis, 0.02)),
      most: axes.map((axis) => part(axis, 0.98)),
    },
  };
}

const extent = (box) => Math.max(...box.most.map((value, axis) => value - box.least[axis]));

/**
 * The level's centre in the file, and the scale that makes it about 100 units large. If a few
 * points are so far away that the rest would be a dot, only the box around most points counts.
 */
export function frameOf(model) {
  const { all, main } = boxes(model.groups.flatMap((group) => [group.vertices, group.points]));
  if (!(all.least[0] <= all.most[0]))
    return { centre: [0, 0, 0], scale: 1, size: 0, outliers: false };
  const outliers = extent(main) > 0 && extent(all) > 200 * extent(main);
  const box = outliers ? main : all;
  const size = extent(box);
  return {
    centre: box.least.map((least, axis) => least / 2 + box.most[axis] / 2),
    scale: size > 0 && Number.isFinite(100 / size) ? 100 / size : 1,
    size,
    outliers,
  };
}

/** Points further away than this, in the page's units, are not shown. */
export const kFarthest = 1e6;

/** Writes point `index` of `list`, in the page's units, to `at` of `target`; NaN if not shown. */
export function placePoint(system, frame, list, index, target, at) {
  for (let axis = 0; axis < 3; ++axis) {
    const from = system.axes[axis];
    const value = system.signs[axis] * (list[3 * index + from] - frame.centre[from]) * frame.scale;
    target[at + axis] = Math.abs(value) <= kFarthest ? value : NaN;
  }
}

/** The point of the file that placePoint puts at `place`, three numbers in the page's units. */
export function filePoint(system, frame, place) {
  const point = [0, 0, 0];
  system.axes.forEach((from, axis) => {
    point[from] = (system.signs[axis] * place[axis]) / frame.scale + frame.centre[from];
  });
  return point;
}
