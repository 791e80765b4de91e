// Which triangle a ray meets first.

/**
 * The first of the soup's triangles that the ray from `origin` along `direction` meets, as
 * { entry, distance }; null for none. Of faces seen from the back only with `backs`. `origin` and
 * `direction` are arrays of three numbers.
 */
export function pick(soup, origin, direction, backs) {
  const { positions: p, shown } = soup;
  const [ox, oy, oz] = origin;
  const [dx, dy, dz] = direction;
  let best = null;
  for (let entry = 0, i = 0; entry < shown.length; ++entry, i += 9) {
    if (!shown[entry]) continue;
    const ax = p[i + 3] - p[i], ay = p[i + 4] - p[i + 1], az = p[i + 5] - p[i + 2];
    const bx = p[i + 6] - p[i], by = p[i + 7] - p[i + 1], bz = p[i + 8] - p[i + 2];
    const hx = dy * bz - dz * by, hy = dz * bx - dx * bz, hz = dx * by - dy * bx;
    const determinant = ax * hx + ay * hy + az * hz; // above 0: seen from the front
    if (determinant === 0 || (determinant < 0 && !backs)) continue;
    const sx = ox - p[i], sy = oy - p[i + 1], sz = oz - p[i + 2];
    const u = (sx * hx + sy * hy + sz * hz) / determinant;
    if (!(u >= 0 && u <= 1)) continue;
    const qx = sy * az - sz * ay, qy = sz * ax - sx * az, qz = sx * ay - sy * ax;
    const v = (dx * qx + dy * qy + dz * qz) / determinant;
    if (!(v >= 0 && u + v <= 1)) continue;
    const distance = (bx * qx + by * qy + bz * qz) / determinant;
    if (distance > 0 && (!best || distance < best.distance)) best = { entry, distance };
  }
  return best;
}
