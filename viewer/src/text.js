// Texts and elements. Names from the file are untrusted: they only become text nodes.

/** An element with attributes or properties and children (elements or texts). */
export function element(tag, properties = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name in made) made[name] = value;
    else made.setAttribute(name, value);
  }
  made.append(...children);
  return made;
}

/**
 * A name from the file. Characters that can't be seen or change the writing direction become
 * escapes.
 */
export function visible(name) {
  return name.replace(
    /[\p{Cc}\p{Zl}\p{Zp}\p{Default_Ignorable_Code_Point}\ufff9-\ufffb\u{13430}-\u{13455}]/gu,
    (character) => {
      const hex = character.codePointAt(0).toString(16).toUpperCase();
      return hex.length > 4 ? `\\U${hex.padStart(8, '0')}` : `\\u${hex.padStart(4, '0')}`;
    },
  );
}

export const named = (name) => element('span', { className: 'name' }, visible(name) || '(no name)');

export const counted = (count) => count.toLocaleString('en-US');

export const countedAs = (count, one, many) => `${counted(count)} ${count === 1 ? one : many}`;

/** A 32-bit float with six digits. */
export const rounded = (number) =>
  Number.isFinite(number) ? `${Number(number.toPrecision(6))}` : `${number}`;

export const point = (numbers) => `(${Array.from(numbers, rounded).join(', ')})`;

/** A small colour swatch, [r, g, b]; nothing for none. */
export function swatch(colour) {
  if (!colour) return '';
  const made = element('canvas', {
    className: 'swatch',
    width: 1,
    height: 1,
    'aria-hidden': 'true',
  });
  const context = made.getContext('2d');
  context.fillStyle = `rgb(${colour.join()})`;
  context.fillRect(0, 0, 1, 1);
  return made;
}
