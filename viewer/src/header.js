// The top of the page, and the warnings about the file.
import { limitsOf } from './limits.js';
import { counted, countedAs, element, visible } from './text.js';

const kMostNames = 20;

const find = (id) => document.getElementById(id);

/** The name of the file and its counts. */
export function showHeader(model, faces) {
  document.title = visible(model.fileName);
  find('name').textContent = visible(model.fileName);
  if (model.comparison) {
    const { fileNames, headline } = model.comparison;
    document.title = fileNames.map(visible).join(' → ');
    find('name').textContent = document.title;
    find('summary').textContent = headline;
    return;
  }
  const vertices = model.groups.reduce((sum, group) => sum + group.vertices.length / 3, 0);
  find('summary').textContent = [
    model.hasFaceTable ? 'kob' : 'qob',
    countedAs(vertices, 'vertex', 'vertices'),
    countedAs(faces.drawn.count, 'triangle', 'triangles'),
    countedAs(model.batches.length, 'batch', 'batches'),
    countedAs(model.materials.length, 'material', 'materials'),
    ...(model.hasFaceTable
      ? [countedAs(faces.undrawn.count, 'collision-only face', 'collision-only faces')]
      : []),
    ...(model.groups.length === 1 ? [] : [countedAs(model.groups.length, 'group', 'groups')]),
  ].join(' · ');
}

/** What is wrong with the file; `hidden` faces can't be shown. */
export function showWarnings(model, frame, hidden) {
  const lines = limitsOf(model)
    .filter(({ count }) => count > model.indexLimit)
    .map(
      ({ name, count, trouble }) =>
        `${name}: ${counted(count)} are more than the ${counted(model.indexLimit)} that the ` +
        `file's 16-bit indices can address: ${trouble}.`,
    );
  if (hidden > 0) {
    lines.push(
      `${countedAs(hidden, 'face is', 'faces are')} not shown: ` +
        'positions are not finite numbers, or lie too far off.',
    );
  }
  if (frame.outliers)
    lines.push('A few points lie far away from all others; the view shows where most are.');
  const bare = model.textures
    ? model.materials.filter(({ id, textureName }) => {
        const isTextured = textureName !== 'NULL' && textureName !== '';
        return isTextured && model.textureOf[id] < 0;
      })
    : [];
  if (bare.length > 0) {
    const names = bare
      .slice(0, kMostNames)
      .map(({ name, textureName }) => `${visible(name)} (${visible(textureName)})`);
    if (bare.length > kMostNames) names.push(`${counted(bare.length - kMostNames)} more`);
    const materials = countedAs(bare.length, 'material', 'materials');
    lines.push(`No picture for ${materials}: ${names.join(', ')}.`);
  }
  find('warnings').replaceChildren(...lines.map((line) => element('li', {}, line)));
  find('warnings').hidden = lines.length === 0;
}
