// What is drawn: the level in one draw call, and over it what is chosen, undrawn faces and planes.
import {
  Box3, BufferAttribute, BufferGeometry, Color, ColorManagement, DataTexture,
  DirectionalLight, DoubleSide, BackSide, HemisphereLight, LinearFilter, LinearMipmapLinearFilter, LinearSRGBColorSpace,
  LineBasicMaterial, LineSegments, Mesh, MeshBasicMaterial, MeshLambertMaterial, RepeatWrapping, Scene,
  Sphere, Vector3, WebGLRenderer,
} from 'three';

import { coordinateSystem } from './coordinates.js';
import { planeOf } from './faces.js';
import { colourCorners } from './colours.js';
import { placeMesh, shareCorners } from './mesh.js';

ColorManagement.enabled = false; // colours go to the screen as they are

const kAccent = new Color('#ff7a00');
const kUndrawn = new Color('#d13bd1');
const kPlanes = new Color('#1d9bd1');
const kBacks = new Color('#7a2f3d');
const kTile = 64;

/** A tile of 8 by 8 squares with an arrow-like corner, so that mirrored texture coordinates show. */
function checkerTexture() {
  const pixels = new Uint8Array(4 * kTile * kTile);
  for (let y = 0; y < kTile; ++y) {
    for (let x = 0; x < kTile; ++x) {
      const dark = ((x >> 3) + (y >> 3)) % 2 === 1;
      const corner = x < 16 && y < 16 && x + y < 24;
      const border = x === 0 || y === 0;
      const colour = corner ? [214, 96, 60] : border ? [40, 90, 160]
        : dark ? [150, 156, 164] : [226, 229, 233];
      pixels.set([...colour, 255], 4 * (y * kTile + x));
    }
  }
  const texture = new DataTexture(pixels, kTile, kTile);
  Object.assign(texture, {
    wrapS: RepeatWrapping, wrapT: RepeatWrapping, generateMipmaps: true, magFilter: LinearFilter,
    minFilter: LinearMipmapLinearFilter, anisotropy: 4, needsUpdate: true,
  });
  return texture;
}

/** Whether pictures are made without a graphics card; then smoothing every edge costs too much. */
function drawsInSoftware() {
  const context = document.createElement('canvas').getContext('webgl2');
  const names = context?.getExtension('WEBGL_debug_renderer_info');
  const name = names ? context.getParameter(names.UNMASKED_RENDERER_WEBGL) : '';
  context?.getExtension('WEBGL_lose_context')?.loseContext();
  return /swiftshader|llvmpipe|software|basic render/i.test(name);
}

function setVertices(geometry, mesh) {
  geometry.setAttribute('position', new BufferAttribute(mesh.positions, 3));
  geometry.setAttribute('normal', new BufferAttribute(mesh.normals, 4, true));
  if (mesh.uvs) geometry.setAttribute('uv', new BufferAttribute(mesh.uvs, 2));
}

/** The part of a mesh's index that some faces are. */
function indexOfFaces(mesh, entries) {
  const index = new Uint32Array(3 * entries.length);
  entries.forEach((entry, i) => index.set(mesh.index.subarray(3 * entry, 3 * entry + 3), 3 * i));
  return index;
}

export class LevelScene {
  #renderer;
  #scene = new Scene();
  #model;
  #faces;
  #frame;
  #corners;
  #rig;
  #size = [1, 1];
  #software = drawsInSoftware();
  #coarse = false;
  #slowPictures = 0;
  #lastPicture = 0;
  #rest = 0;
  #waiting = false;
  #only = false;
  #kinds = { drawn: new BufferGeometry(), undrawn: new BufferGeometry() };
  #chosen = { drawn: new BufferGeometry(), undrawn: new BufferGeometry() };
  #materials;
  #meshes = {};
  meshes = {};
  box = new Box3();
  sphere = new Sphere();

  /** Throws when the browser has no WebGL. */
  constructor(canvas, model, faces, frame, rig) {
    this.#renderer = new WebGLRenderer(
      { canvas, antialias: !this.#software, powerPreference: 'high-performance' });
    this.#renderer.outputColorSpace = LinearSRGBColorSpace;
    this.#model = model;
    this.#faces = faces;
    this.#frame = frame;
    this.#rig = rig;
    this.#corners = {
      drawn: shareCorners(model, 'drawn', faces.drawn),
      undrawn: shareCorners(model, 'undrawn', faces.undrawn),
    };
    this.#addLights();
    this.#addMeshes();
  }

  #addLights() {
    const sun = new DirectionalLight(0xffffff, 1.5);
    sun.position.set(-0.6, 0.5, 1); // beside the camera
    this.#rig.camera.add(sun, sun.target);
    sun.target.position.set(0, 0, -1);
    this.#scene.add(new HemisphereLight(0xffffff, 0x8c8c94, 1.7), this.#rig.camera);
  }

  #addMeshes() {
    const below = { polygonOffset: true, polygonOffsetFactor: 1, polygonOffsetUnits: 1 };
    const above = { transparent: true, depthWrite: false };
    this.#materials = {
      level: new MeshLambertMaterial({ vertexColors: true, ...below }),
      backs: new MeshBasicMaterial({ color: kBacks, side: BackSide, ...below }),
      edges: new MeshBasicMaterial({ wireframe: true, opacity: 0.35, ...above }),
      undrawn: new MeshLambertMaterial({ color: kUndrawn, side: DoubleSide, opacity: 0.35, ...above }),
      undrawnEdges: new MeshBasicMaterial({ color: kUndrawn, wireframe: true }),
      planes: new MeshBasicMaterial({ color: kPlanes, side: DoubleSide, opacity: 0.35, ...above }),
      planePins: new LineBasicMaterial({ color: kPlanes }),
      chosen: new MeshBasicMaterial({ color: kAccent, side: DoubleSide, opacity: 0.4, ...above }),
      hidden: new MeshBasicMaterial(
        { color: kAccent, side: DoubleSide, opacity: 0.13, depthTest: false, ...above }),
      outline: new MeshBasicMaterial({ color: kAccent, wireframe: true, depthTest: false }),
    };
    const { drawn, undrawn } = this.#kinds;
    const planes = new BufferGeometry();
    const add = (name, mesh, order) => {
      mesh.frustumCulled = false; // one mesh is the whole level
      mesh.renderOrder = order;
      this.#meshes[name] = mesh;
      this.#scene.add(mesh);
    };
    const m = this.#materials;
    add('level', new Mesh(drawn, m.level), 0);
    add('backs', new Mesh(drawn, m.backs), 0);
    add('edges', new Mesh(drawn, m.edges), 1);
    add('undrawn', new Mesh(undrawn, m.undrawn), 2);
    add('undrawnEdges', new Mesh(undrawn, m.undrawnEdges), 2);
    add('planes', new Mesh(planes, m.planes), 3);
    add('planePins', new LineSegments(new BufferGeometry(), m.planePins), 3);
    for (const [kind, geometry] of Object.entries(this.#chosen)) {
      add(`${kind}Chosen`, new Mesh(geometry, m.chosen), 4);
      add(`${kind}Hidden`, new Mesh(geometry, m.hidden), 4);
      add(`${kind}Outline`, new Mesh(geometry, m.outline), 5);
    }
    for (const name of Object.keys(this.#meshes)) this.#meshes[name].visible = name === 'level';
  }

  /** Puts the level into a coordinate system. */
  setSystem(index) {
    for (const kind of ['drawn', 'undrawn']) {
      const mesh = placeMesh(this.#model, kind, this.#faces[kind], this.#corners[kind], index, this.#frame);
      this.meshes[kind] = mesh;
      this.#kinds[kind].dispose();
      this.#chosen[kind].dispose();
      setVertices(this.#kinds[kind], mesh);
      this.#kinds[kind].setIndex(new BufferAttribute(mesh.index, 1));
      setVertices(this.#chosen[kind], mesh);
    }
    this.#buildPlanes(coordinateSystem(index));
    this.#measure();
    this.draw();
  }

  /** The box of what lies in reach; a far outlier does not count. */
  #measure() {
    this.box = this.boxOf('drawn').union(this.boxOf('undrawn'));
    const reach = new Box3(new Vector3(-150, -150, -150), new Vector3(150, 150, 150));
    this.box.intersect(reach);
    if (this.box.isEmpty()) this.box = new Box3(new Vector3(-1, -1, -1), new Vector3(1, 1, 1));
    this.box.getBoundingSphere(this.sphere);
  }

  /** The box around all faces of a kind, or some of them. */
  boxOf(kind, entries = null) {
    const { positions, index, shown } = this.meshes[kind];
    const box = new Box3();
    const point = new Vector3();
    const count = entries ? entries.length : shown.length;
    for (let i = 0; i < count; ++i) {
      const entry = entries ? entries[i] : i;
      if (!shown[entry]) continue;
      for (let k = 0; k < 3; ++k) {
        box.expandByPoint(point.fromArray(positions, 3 * index[3 * entry + k]));
      }
    }
    return box;
  }

  /** The direction that the front of a face looks in; no length for none. */
  normalOf(kind, entry) {
    const { positions, index } = this.meshes[kind];
    const [a, b, c] = [0, 1, 2].map((k) => new Vector3().fromArray(positions, 3 * index[3 * entry + k]));
    return b.sub(a).cross(c.sub(a)).normalize();
  }

  /** The middle of a face. */
  middleOf(kind, entry) {
    const { positions, index } = this.meshes[kind];
    const middle = new Vector3();
    const corner = new Vector3();
    for (let k = 0; k < 3; ++k) {
      middle.add(corner.fromArray(positions, 3 * index[3 * entry + k]).divideScalar(3));
    }
    return middle;
  }

  /** A square on each plane, where its face is, with a pin along the normal. */
  #buildPlanes(system) {
    const { positions, index, shown } = this.meshes.undrawn;
    const squares = [];
    const pins = [];
    const corner = new Vector3();
    for (let entry = 0; entry < shown.length; ++entry) {
      const plane = planeOf(this.#model, 'undrawn', this.#faces.undrawn, entry);
      const normal = new Vector3(...system.axes.map((axis, i) => system.signs[i] * plane[axis]));
      const length = normal.length();
      if (!shown[entry] || !(length > 0 && Number.isFinite(length + plane[3]))) continue;
      const middle = this.middleOf('undrawn', entry);
      let radius = 0;
      for (let k = 0; k < 3; ++k) {
        radius = Math.max(radius, corner.fromArray(positions, 3 * index[3 * entry + k]).distanceTo(middle));
      }
      // From the face's middle along the normal onto the plane that the file tells.
      const origin = system.axes.reduce((sum, axis) => sum + plane[axis] * this.#frame.centre[axis], 0);
      const off = (normal.dot(middle) + (origin + plane[3]) * this.#frame.scale) / (length * length);
      middle.addScaledVector(normal, -off);
      normal.multiplyScalar(system.normalSign / length);
      const side = new Vector3(0, 1, 0).cross(normal);
      if (side.lengthSq() < 1e-6) side.set(1, 0, 0);
      side.normalize().multiplyScalar(radius * 0.6);
      const up = normal.clone().cross(side);
      const at = (x, y) => middle.clone().addScaledVector(side, x).addScaledVector(up, y).toArray();
      squares.push(...at(-1, -1), ...at(1, -1), ...at(1, 1), ...at(-1, -1), ...at(1, 1), ...at(-1, 1));
      pins.push(...middle.toArray(), ...middle.addScaledVector(normal, radius * 0.8).toArray());
    }
    for (const [name, list] of [['planes', squares], ['planePins', pins]]) {
      this.#meshes[name].geometry.dispose();
      this.#meshes[name].geometry.setAttribute('position', new BufferAttribute(new Float32Array(list), 3));
    }
  }

  setColouring(id) {
    const colours = colourCorners(this.#model, this.#faces.drawn, this.#corners.drawn, id);
    this.#kinds.drawn.setAttribute('color', new BufferAttribute(colours, 4, true));
    const isTexture = id === 'uv';
    const { level } = this.#materials;
    if (isTexture !== Boolean(level.map)) {
      level.map = isTexture ? checkerTexture() : null;
      level.needsUpdate = true;
    }
    this.draw();
  }

  /** `parts`: whether `backs`, `edges`, `undrawn` faces and `planes` are shown. */
  setParts(parts) {
    this.#meshes.backs.visible = parts.backs;
    this.#meshes.edges.visible = parts.edges;
    this.#meshes.undrawn.visible = this.#meshes.undrawnEdges.visible = parts.undrawn;
    this.#meshes.planes.visible = this.#meshes.planePins.visible = parts.planes;
    this.draw();
  }

  /** Marks faces: lists of entries of the drawn and the undrawn. With `only` no other is shown. */
  setChosen(drawn, undrawn, only) {
    const some = drawn.length + undrawn.length > 0;
    for (const [kind, entries] of Object.entries({ drawn, undrawn })) {
      const index = indexOfFaces(this.meshes[kind], entries);
      this.#chosen[kind].dispose(); // also the outline's edges
      this.#chosen[kind].setIndex(new BufferAttribute(index, 1));
      for (const part of ['Chosen', 'Hidden', 'Outline']) {
        this.#meshes[kind + part].visible = entries.length > 0 && !only;
      }
      if (only || this.#only) {
        this.#kinds[kind].dispose();
        this.#kinds[kind].setIndex(new BufferAttribute(only && some ? index : this.meshes[kind].index, 1));
      }
    }
    this.#only = only;
    // Few faces get an outline that shines through; many would be a thicket.
    this.#materials.outline.depthTest = drawn.length + undrawn.length > 12;
    this.draw();
  }

  setBackground(background, edges) {
    this.#renderer.setClearColor(new Color(background));
    this.#materials.edges.color.set(edges);
    this.draw();
  }

  resize(width, height) {
    this.#size = [Math.max(1, width), Math.max(1, height)];
    this.#rig.camera.aspect = this.#size[0] / this.#size[1];
    this.#setSharpness();
  }

  #setSharpness() {
    // Without edges smoothed on the way, a picture at rest is made larger than it is shown.
    const own = Math.min(2, window.devicePixelRatio);
    const [fine, coarse] = this.#software ? [1.5 * own, own] : [own, own / 2];
    this.#renderer.setPixelRatio(this.#coarse ? coarse : fine);
    this.#renderer.setSize(...this.#size, false);
    this.draw();
  }

  /** Where pictures take long, without a graphics card, they are coarse while things move. */
  #keepPace(now) {
    const gap = now - this.#lastPicture;
    this.#lastPicture = now;
    this.#slowPictures = gap > 45 && gap < 400 ? this.#slowPictures + 1 : 0;
    clearTimeout(this.#rest);
    if (!this.#coarse && this.#slowPictures >= (this.#software ? 1 : 3)) {
      this.#coarse = true;
      this.#setSharpness();
    }
    if (!this.#coarse) return;
    this.#rest = setTimeout(() => {
      this.#coarse = false;
      this.#slowPictures = 0;
      this.#setSharpness();
    }, 350);
  }

  /** Draws with the next picture of the browser, once. */
  draw() {
    if (this.#waiting) return;
    this.#waiting = true;
    requestAnimationFrame((now) => {
      this.#waiting = false;
      this.#keepPace(now);
      this.#rig.update(this.#rig.camera.aspect, this.sphere);
      this.#renderer.render(this.#scene, this.#rig.camera);
    });
  }

  /** Origin and direction, as arrays, of the ray through a place of the picture from -1 to 1. */
  ray(x, y) {
    this.#rig.update(this.#rig.camera.aspect, this.sphere);
    const origin = this.#rig.camera.position.clone();
    const direction = new Vector3(x, y, 0.5).unproject(this.#rig.camera).sub(origin).normalize();
    return [origin.toArray(), direction.toArray()];
  }
}
