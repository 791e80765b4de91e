// The materials of the 3D scene: of the level itself, and of what is drawn over it.
import {
  BackSide,
  Color,
  DoubleSide,
  LineBasicMaterial,
  MeshBasicMaterial,
  MeshLambertMaterial,
} from 'three';

const kAccent = new Color('#ff7a00');
export const kUndrawn = new Color('#d13bd1');
const kPlanes = new Color('#1d9bd1');
const kBacks = new Color('#7a2f3d');

/** By what each is for. */
export function levelMaterials() {
  const below = { polygonOffset: true, polygonOffsetFactor: 1, polygonOffsetUnits: 1 };
  const further = { ...below, polygonOffsetFactor: 2, polygonOffsetUnits: 2 };
  const above = { transparent: true, depthWrite: false };
  return {
    level: new MeshLambertMaterial({ vertexColors: true, ...below }),
    // Where faces of A and B lie in one plane, those of B are seen.
    levelOfA: new MeshLambertMaterial({ vertexColors: true, ...further }),
    backs: new MeshBasicMaterial({ color: kBacks, side: BackSide, ...below }),
    edges: new MeshBasicMaterial({ wireframe: true, opacity: 0.35, ...above }),
    undrawn: new MeshLambertMaterial({
      color: kUndrawn,
      side: DoubleSide,
      opacity: 0.35,
      ...above,
    }),
    undrawnEdges: new MeshBasicMaterial({ color: kUndrawn, wireframe: true }),
    planes: new MeshBasicMaterial({ color: kPlanes, side: DoubleSide, opacity: 0.35, ...above }),
    planePins: new LineBasicMaterial({ color: kPlanes }),
    chosen: new MeshBasicMaterial({ color: kAccent, side: DoubleSide, opacity: 0.4, ...above }),
    hidden: new MeshBasicMaterial({
      color: kAccent,
      side: DoubleSide,
      opacity: 0.13,
      depthTest: false,
      ...above,
    }),
    outline: new MeshBasicMaterial({ color: kAccent, wireframe: true, depthTest: false }),
  };
}
