// The 3D scene: the level in one draw call, and over it the selection, undrawn faces and planes.
import {
  Box3,
  BufferAttribute,
  BufferGeometry,
  Color,
  ColorManagement,
  DirectionalLight,
  HemisphereLight,
  LinearSRGBColorSpace,
  LineSegments,
  Mesh,
  Scene,
  Sphere,
  Vector3,
  WebGLRenderer,
} from 'three';

import {
  drawsInSoftware,
  free,
  groupsOfModels,
  indexOfFaces,
  setVertices,
  visibleFaces,
} from './buffers.js';
import { checkerTexture } from './checker.js';
import { changeCorners, colourCorners } from './colours.js';
import { kUndrawn, levelMaterials } from './materials.js';
import { placeMesh, shareCorners } from './mesh.js';
import { Pace } from './pace.js';
import { planeShapes } from './planes.js';
import { ContactShading, kSolid } from './shading.js';
import { boxOf, cornersOfBox, visiblePositions } from './shapes.js';
import { LevelTextures } from './textures.js';

ColorManagement.enabled = false; // colours go to the screen as they are

export class LevelScene {
  #renderer;
  #scene = new Scene();
  #model;
  #faces;
  #frame;
  #corners;
  #rig;
  #system = 0;
  #size = [1, 1];
  #software = drawsInSoftware();
  #pace;
  #shading = new ContactShading(this.#software ? 0.5 : 1);
  #only = false;
  #onlyDrawn = null; // the drawn faces that alone are shown: index and entries
  #parts = { undrawn: false, textures: false, shading: false };
  #chosenUndrawn = false;
  #shown = null; // of a comparison: the changes that are shown
  #kinds = { drawn: new BufferGeometry(), undrawn: new BufferGeometry() };
  #chosen = { drawn: new BufferGeometry(), undrawn: new BufferGeometry() };
  #materials;
  #shapes = {}; // three's meshes, by what they show
  #textures;
  #colouring = null;
  /** Called with the camera after each picture. */
  drawn = null;
  /**
   * The results of placeMesh for the `drawn` and the `undrawn` faces. `visible` is 1 for each face
   * that is `shown` and not left out by setShown; `visibleIndex` is the index of these.
   */
  meshes = {};
  /** The bounding box of the level without far outliers, and the sphere around it. */
  box = new Box3();
  sphere = new Sphere();

  /** Throws when the browser has no WebGL. */
  constructor(canvas, model, faces, frame, rig) {
    this.#renderer = new WebGLRenderer({
      canvas,
      antialias: !this.#software,
      powerPreference: 'high-performance',
    });
    this.#renderer.outputColorSpace = LinearSRGBColorSpace;
    canvas.addEventListener('webglcontextlost', () => this.#forget());
    canvas.addEventListener('webglcontextrestored', () => this.draw());
    this.#model = model;
    this.#faces = faces;
    this.#frame = frame;
    this.#rig = rig;
    this.#corners = {
      drawn: shareCorners(model, 'drawn', faces.drawn),
      undrawn: shareCorners(model, 'undrawn', faces.undrawn),
    };
    this.#pace = new Pace(canvas, this.#software, {
      paint: (still) => this.#paint(still),
      sharpen: () => this.#setSharpness(),
    });
    this.#addLights();
    this.#addMeshes();
    const { polygonOffset, polygonOffsetFactor, polygonOffsetUnits } = this.#materials.level;
    const below = { polygonOffset, polygonOffsetFactor, polygonOffsetUnits };
    this.#textures = new LevelTextures(model, faces.drawn, below, (left) => {
      this.#pace.loading = left > 0;
      this.draw();
    });
    this.#pace.loading = this.#textures.materials.length > 0;
  }

  /** Forgets what the lost context held: freed later, it would be unknown to the new one. */
  #forget() {
    free(this.#scene, [...Object.values(this.#materials), ...this.#textures.materials]);
    this.#shading.dispose();
  }

  #addLights() {
    const sun = new DirectionalLight(0xffffff, 1.25);
    sun.position.set(-0.6, 0.6, 1); // beside the camera
    this.#rig.camera.add(sun, sun.target);
    sun.target.position.set(0, 0, -1);
    const sky = new HemisphereLight(0xffffff, 0x8a8a94, 2.1);
    for (const light of [sun, sky]) light.layers.enable(kSolid);
    this.#scene.add(sky, this.#rig.camera, this.#shading.overlay);
  }

  #addMeshes() {
    this.#materials = levelMaterials();
    const { drawn, undrawn } = this.#kinds;
    const planes = new BufferGeometry();
    const add = (name, mesh, order) => {
      mesh.frustumCulled = false; // one mesh is the whole level
      mesh.renderOrder = order;
      if (order === 0) mesh.layers.enable(kSolid);
      this.#shapes[name] = mesh;
      this.#scene.add(mesh);
    };
    const m = this.#materials;
    add('level', new Mesh(drawn, [m.level, m.levelOfA]), 0);
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
    if (this.#faces.undrawn.change) {
      const same = kUndrawn.toArray().map((channel) => Math.round(255 * channel));
      const colours = changeCorners(this.#faces.undrawn, this.#corners.undrawn, same);
      undrawn.setAttribute('color', new BufferAttribute(colours, 4, true));
      m.undrawn.vertexColors = true;
      m.undrawn.color.set(0xffffff);
    }
    for (const name of Object.keys(this.#shapes)) this.#shapes[name].visible = name === 'level';
  }

  /** Shows the level in a coordinate system. */
  setSystem(index) {
    for (const kind of ['drawn', 'undrawn']) {
      const mesh = placeMesh(
        this.#model,
        kind,
        this.#faces[kind],
        this.#corners[kind],
        index,
        this.#frame,
      );
      this.meshes[kind] = mesh;
      this.#chosen[kind].dispose();
      setVertices(this.#kinds[kind], mesh);
      this.#filter(kind);
      setVertices(this.#chosen[kind], mesh);
    }
    this.#system = index;
    this.#placePlanes();
    this.#measure();
    this.draw();
  }

  /** Shows only the faces of a comparison whose change is among `changes`. */
  setShown(changes) {
    this.#shown = changes;
    for (const kind of Object.keys(this.meshes)) this.#filter(kind);
    if (this.meshes.undrawn) this.#placePlanes();
    this.draw();
  }

  #filter(kind) {
    const mesh = this.meshes[kind];
    const { change } = this.#faces[kind];
    Object.assign(mesh, visibleFaces(mesh, change, this.#shown));
    this.#setIndex(kind, mesh.visibleIndex);
  }

  #placePlanes() {
    const { squares, pins } = planeShapes(
      this.#model,
      this.#faces.undrawn,
      this.meshes.undrawn,
      this.#system,
      this.#frame,
    );
    for (const [name, list] of Object.entries({ planes: squares, planePins: pins })) {
      const { geometry } = this.#shapes[name];
      geometry.dispose();
      geometry.setAttribute('position', new BufferAttribute(new Float32Array(list), 3));
    }
  }

  /** The bounding box of the level without far outliers. */
  #measure() {
    this.box = boxOf(this.meshes.drawn).union(boxOf(this.meshes.undrawn));
    const reach = new Box3(new Vector3(-150, -150, -150), new Vector3(150, 150, 150));
    this.box.intersect(reach);
    if (this.box.isEmpty()) this.box = new Box3(new Vector3(-1, -1, -1), new Vector3(1, 1, 1));
    this.box.getBoundingSphere(this.sphere);
  }

  /** The points that a view of all, or of all that is visible, must contain, as flat lists. */
  points(visible = false) {
    const { drawn, undrawn } = this.meshes;
    const shown = this.#parts.undrawn || drawn.positions.length === 0 ? [drawn, undrawn] : [drawn];
    const lists = shown
      .map((mesh) => (visible ? visiblePositions(mesh) : mesh.positions))
      .filter((list) => list.length > 0);
    return this.#frame.outliers || lists.length === 0 ? [cornersOfBox(this.box)] : lists;
  }

  /** Draws those faces of a kind; `entries` are theirs unless they are all. */
  #setIndex(kind, index, entries = null) {
    const geometry = this.#kinds[kind];
    geometry.dispose();
    if (kind !== 'drawn') {
      geometry.setIndex(new BufferAttribute(index, 1));
      return;
    }
    const { level, levelOfA } = this.#materials;
    const isTextured = this.#textures?.shown;
    const ordered = isTextured
      ? this.#textures.order(index, entries)
      : { index, groups: groupsOfModels(index, this.#corners.drawn, this.#faces.drawn) };
    geometry.setIndex(new BufferAttribute(ordered.index, 1));
    geometry.clearGroups();
    for (const group of ordered.groups) geometry.addGroup(...group);
    this.#shapes.level.material = [level, ...(isTextured ? this.#textures.materials : [levelOfA])];
  }

  /** Draws with the textures, or without, as it is wanted now. */
  #showTextures() {
    const shown = this.#parts.textures && this.#colouring !== 'uv';
    if (shown === this.#textures.shown) return;
    this.#textures.shown = shown;
    const { index, entries } = this.#onlyDrawn ?? { index: this.meshes.drawn.visibleIndex };
    this.#setIndex('drawn', index, entries);
    this.draw();
  }

  setColouring(id) {
    this.#colouring = id;
    this.#textures.setVertexColours(id === 'vertex');
    this.#showTextures();
    const colours = colourCorners(this.#model, this.#faces.drawn, this.#corners.drawn, id);
    this.#kinds.drawn.setAttribute('color', new BufferAttribute(colours, 4, true));
    const isTexture = id === 'uv';
    for (const material of [this.#materials.level, this.#materials.levelOfA]) {
      if (isTexture === Boolean(material.map)) continue;
      material.map = isTexture ? checkerTexture() : null;
      material.needsUpdate = true;
    }
    this.draw();
  }

  /** `parts`: whether `backs`, `edges`, `undrawn` faces, `planes` and `shading` are shown. */
  setParts(parts) {
    this.#shapes.backs.visible = parts.backs;
    this.#shapes.edges.visible = parts.edges;
    const changes = this.#parts.textures !== parts.textures;
    this.#parts = { ...parts };
    if (changes) this.#showTextures();
    this.#showUndrawn();
    this.#shapes.planes.visible = this.#shapes.planePins.visible = parts.planes;
    this.draw();
  }

  /** Undrawn faces are always shown when nothing else is visible. */
  #showUndrawn() {
    const visible = this.#parts.undrawn || (this.#only && this.#chosenUndrawn);
    this.#shapes.undrawn.visible = this.#shapes.undrawnEdges.visible = visible;
  }

  /**
   * Marks faces, given as lists of entries of the drawn and the undrawn. With `only`, no others are
   * shown.
   */
  setChosen(drawn, undrawn, only) {
    const some = drawn.length + undrawn.length > 0;
    for (const [kind, entries] of Object.entries({ drawn, undrawn })) {
      const index = indexOfFaces(this.meshes[kind], entries);
      this.#chosen[kind].dispose(); // also the outline's edges
      this.#chosen[kind].setIndex(new BufferAttribute(index, 1));
      for (const part of ['Chosen', 'Hidden', 'Outline']) {
        this.#shapes[kind + part].visible = entries.length > 0 && !only;
      }
      if (only || this.#only) {
        if (kind === 'drawn') this.#onlyDrawn = only && some ? { index, entries } : null;
        if (only && some) this.#setIndex(kind, index, entries);
        else this.#setIndex(kind, this.meshes[kind].visibleIndex);
      }
    }
    this.#only = only;
    this.#chosenUndrawn = undrawn.length > 0;
    this.#showUndrawn();
    // Few faces get an outline that shows through the level; with many it would be cluttered.
    this.#materials.outline.depthTest = drawn.length + undrawn.length > 12;
    this.draw();
  }

  setBackground(background, edges) {
    this.#scene.background = new Color(background);
    this.#materials.edges.color.set(edges);
    this.draw();
  }

  add(...objects) {
    this.#scene.add(...objects);
  }

  /** Shows only what lies on the side of a Plane that its normal points to; null: everything. */
  setSection(plane) {
    this.#renderer.clippingPlanes = plane ? [plane] : [];
  }

  /** Where, as least and greatest distance, the section leaves something of a ray. */
  rangeOf(origin, direction) {
    const [plane] = this.#renderer.clippingPlanes;
    if (!plane) return [0, Infinity];
    const above = plane.distanceToPoint(new Vector3(...origin));
    const slope = plane.normal.dot(new Vector3(...direction));
    if (slope === 0) return above >= 0 ? [0, Infinity] : [0, 0];
    return slope > 0 ? [Math.max(0, -above / slope), Infinity] : [0, -above / slope];
  }

  resize(width, height) {
    this.#size = [Math.max(1, width), Math.max(1, height)];
    this.#rig.camera.aspect = this.#size[0] / this.#size[1];
    this.#setSharpness();
  }

  #setSharpness() {
    // Without antialiasing, a still picture is drawn larger than it is shown.
    const own = Math.min(2, window.devicePixelRatio);
    const [fine, coarse] = this.#software ? [1.5 * own, own] : [own, own / 2];
    this.#renderer.setPixelRatio(this.#pace.coarse ? coarse : fine);
    this.#renderer.setSize(...this.#size, false);
    this.draw();
  }

  /** Draws once, with the browser's next frame. */
  draw() {
    this.#pace.draw();
  }

  /** Returns whether the picture is as good as it gets: in software, `still` ones are shaded. */
  #paint(still) {
    const { camera } = this.#rig;
    this.#rig.update(camera.aspect, this.sphere);
    if (this.#renderer.getContext().isContextLost()) return true; // until there is a new one
    const { coarse } = this.#pace;
    const isShaded = this.#parts.shading && !coarse && (still || !this.#software);
    if (isShaded) {
      this.#shading.prepare(this.#renderer, this.#scene, camera, this.sphere.radius);
    }
    this.#shading.overlay.visible = isShaded;
    this.#renderer.render(this.#scene, camera);
    this.drawn?.(camera);
    return !coarse && isShaded === this.#parts.shading;
  }

  /** How many pixels a point in the page's units is away from a place of the picture. */
  pixelsFrom(point, x, y) {
    const at = point.clone().project(this.#rig.camera);
    return Math.hypot(((at.x - x) * this.#size[0]) / 2, ((at.y - y) * this.#size[1]) / 2);
  }

  /**
   * Origin and direction, as arrays, of the ray through a place of the picture, each coordinate
   * from -1 to 1.
   */
  ray(x, y) {
    this.#rig.update(this.#rig.camera.aspect, this.sphere);
    const origin = this.#rig.camera.position.clone();
    const direction = new Vector3(x, y, 0.5).unproject(this.#rig.camera).sub(origin).normalize();
    return [origin.toArray(), direction.toArray()];
  }
}
