// What is chosen, as the part of the page's address behind "#", so that a link can show it:
//   #material=3   #batch=12   #batch=12&face=7   #set=1   #group=2   #face=231&group=2 (of the face
//   table)

/** The selection that `hash` names; null when the model does not have it. */
export function choiceOfHash(hash, model, materials, faces) {
  const asked = new URLSearchParams(hash.replace(/^#/, ''));
  const number = (name) =>
    /^-?\d{1,9}$/.test(asked.get(name) ?? '') ? Number(asked.get(name)) : null;
  const find = (kind, list) => {
    const thing = list.find((entry) => entry.id === number(kind));
    return thing ? { kind, thing } : null;
  };
  const face = number('face');
  if (face === null) {
    return (
      find('material', materials) ??
      find('batch', model.batches) ??
      find('set', model.sets) ??
      find('group', model.groups)
    );
  }
  const batch = number('batch');
  if (batch !== null) {
    const { drawn } = faces;
    const entry = drawn.batch.findIndex((owner, i) => owner === batch && drawn.face[i] === face);
    return entry < 0 ? null : { kind: 'face', faceKind: 'drawn', entry };
  }
  for (const [faceKind, own] of Object.entries(faces)) {
    const group = number('group') ?? 0;
    const entry = own.table.findIndex((row, i) => row === face && own.group[i] === group);
    if (entry >= 0) return { kind: 'face', faceKind, entry };
  }
  return null;
}

/** The part of an address that names `choice`; empty for none. */
export function hashOf(choice, faces) {
  if (!choice) return '';
  if (choice.kind !== 'face') return `#${choice.kind}=${choice.thing.id}`;
  const own = faces[choice.faceKind];
  const { entry } = choice;
  if (own.table[entry] < 0) return `#batch=${own.batch[entry]}&face=${own.face[entry]}`;
  return `#face=${own.table[entry]}${own.group[entry] > 0 ? `&group=${own.group[entry]}` : ''}`;
}
