// Finds the first triangle that a ray meets.

/**
 * The first triangle of a mesh that the ray from `origin` along `direction` meets, as { entry,
 * distance }; null for none. Faces seen from the back count only with `backs`. `origin` and
 * `direction` are arrays of three numbers. Only distances between `least` and `most` count.
 * Of equal distances the last one wins, as in the picture.
 */
export function pick(mesh, origin, direction, backs, [least, most] = [0, Infinity]) {
  const { positions: p, index, visible: shown } = mesh;
  const [ox, oy, oz] = origin;
  const [dx, dy, dz] = direction;
  let best = null;
  for (let entry = 0; entry < shown.length; ++entry) {
    if (!shown[entry]) continue;
    const i = 3 * index[3 * entry],
      j = 3 * index[3 * entry + 1],
      k = 3 * index[3 * entry + 2];
    const ax = p[j] - p[i],
      ay = p[j + 1] - p[i + 1],
      az = p[j + 2] - p[i + 2];
    const bx = p[k] - p[i],
      by = p[k + 1] - p[i + 1],
      bz = p[k + 2] - p[i + 2];
    const hx = dy * bz - dz * by,
      hy = dz * bx - dx * bz,
      hz = dx * by - dy * bx;
    const determinant = ax * hx + ay * hy + az * hz; // above 0: seen from the front
    if (determinant === 0 || (determinant < 0 && !backs)) continue;
    const sx = ox - p[i],
      sy = oy - p[i + 1],
      sz = oz - p[i + 2];
    const u = (sx * hx + sy * hy + sz * hz) / determinant;
    if (!(u >= 0 && u <= 1)) continue;
    const qx = sy * az - sz * ay,
      qy = sz * ax - sx * az,
      qz = sx * ay - sy * ax;
    const v = (dx * qx + dy * qy + dz * qz) / determinant;
    if (!(v >= 0 && u + v <= 1)) continue;
    const distance = (bx * qx + by * qy + bz * qz) / determinant;
    if (distance > least && distance < most && (!best || distance <= best.distance))
      best = { entry, distance };
  }
  return best;
}
