// Soft contact shading: from the depths in the picture, how much of its surroundings each point of
// the level faces close by. It needs nothing that a browser with WebGL 2 may lack.
import {
  BufferAttribute,
  BufferGeometry,
  Camera,
  CustomBlending,
  DepthTexture,
  Mesh,
  ShaderMaterial,
  SrcColorFactor,
  UnsignedIntType,
  Vector2,
  WebGLRenderTarget,
  ZeroFactor,
} from 'three';

import { free } from './buffers.js';

/** The layer of all objects that shade and are shaded. */
export const kSolid = 1;

const kReach = 0.08; // how far objects shade, as part of the level's radius
const kShare = 0.045; // the same close by, as part of the distance from the eye

const kCorners = 'void main() { gl_Position = vec4(position.xy, 0.0, 1.0); }';
const kPlaces = `
  uniform sampler2D depths;
  uniform mat4 projection;
  uniform float reach;

  float depthAt(ivec2 pixel) {
    ivec2 last = textureSize(depths, 0) - 1;
    return texelFetch(depths, clamp(pixel, ivec2(0), last), 0).r;
  }
  float awayOf(float depth) { // from the eye, along the view
    return projection[3][2] / (2.0 * depth - 1.0 + projection[2][2]);
  }
  vec3 placeAt(ivec2 pixel) {
    vec2 at = (vec2(pixel) + 0.5) / vec2(textureSize(depths, 0)) * 2.0 - 1.0;
    float away = awayOf(depthAt(pixel));
    return vec3(at * away / vec2(projection[0][0], projection[1][1]), -away);
  }
  float reachAt(float away) { return min(reach, away * ${kShare}); }
`;

// Samples on a spiral, which each pixel of a square of 4 by 4 turns differently.
const kOcclusion = `${kPlaces}
  const int kSamples = 12;

  void main() {
    ivec2 pixel = ivec2(gl_FragCoord.xy);
    if (depthAt(pixel) == 1.0) {
      gl_FragColor = vec4(1.0);
      return;
    }
    vec3 here = placeAt(pixel);
    vec3 left = here - placeAt(pixel - ivec2(1, 0));
    vec3 right = placeAt(pixel + ivec2(1, 0)) - here;
    vec3 below = here - placeAt(pixel - ivec2(0, 1));
    vec3 above = placeAt(pixel + ivec2(0, 1)) - here;
    vec3 normal = normalize(cross(abs(left.z) < abs(right.z) ? left : right,
                                  abs(below.z) < abs(above.z) ? below : above));
    float limit = reachAt(-here.z);
    float pixels = 0.5 * limit / -here.z * projection[1][1] * float(textureSize(depths, 0).y);
    float turn = float(4 * (pixel.x & 3) + ((pixel.y + 2 * pixel.x) & 3)) / 16.0;
    float sum = 0.0;
    for (int i = 0; i < kSamples; ++i) {
      float part = (float(i) + turn + 0.2) / float(kSamples);
      float angle = 6.2832 * (part * 5.0 + turn);
      ivec2 there = pixel + ivec2(round(part * pixels * vec2(cos(angle), sin(angle))));
      vec3 arm = placeAt(there) - here;
      float size = length(arm);
      float height = dot(arm, normal) + 0.001 * here.z; // depths are not exact
      sum += max(0.0, height / max(size, 1e-6) - 0.08) * max(0.0, 1.0 - size / limit);
    }
    gl_FragColor = vec4(max(0.4, 1.0 - 4.0 * sum / float(kSamples)));
  }
`;

// The mean of the 16 pixels around, without those that are much nearer or further.
const kApplied = `${kPlaces}
  uniform sampler2D occlusion;
  uniform vec2 size;

  void main() {
    vec2 at = gl_FragCoord.xy / size * vec2(textureSize(depths, 0));
    float depth = depthAt(ivec2(at));
    float away = awayOf(depth);
    ivec2 first = ivec2(floor(at - 0.5)) - 1;
    vec2 sum = vec2(1e-4);
    for (int i = 0; i < 16 && depth < 1.0; ++i) {
      ivec2 pixel = clamp(first + ivec2(i & 3, i >> 2), ivec2(0), textureSize(depths, 0) - 1);
      float apart = abs(awayOf(depthAt(pixel)) - away);
      float weight = max(0.0, 1.0 - apart / reachAt(away));
      sum += weight * vec2(texelFetch(occlusion, pixel, 0).r, 1.0);
    }
    gl_FragColor = vec4(vec3(sum.x / sum.y), 1.0);
  }
`;

/** A triangle over the whole picture. */
function overAll(uniforms, fragmentShader, options = {}) {
  const geometry = new BufferGeometry();
  const corners = new Float32Array([-1, -1, 0, 3, -1, 0, -1, 3, 0]);
  geometry.setAttribute('position', new BufferAttribute(corners, 3));
  const shared = { depthTest: false, depthWrite: false, vertexShader: kCorners };
  const material = new ShaderMaterial({ uniforms, fragmentShader, ...shared, ...options });
  const made = new Mesh(geometry, material);
  made.frustumCulled = false;
  return made;
}

export class ContactShading {
  #scale;
  #solid = new WebGLRenderTarget(1, 1, { depthTexture: new DepthTexture(1, 1, UnsignedIntType) });
  #occlusion = new WebGLRenderTarget(1, 1, { depthBuffer: false });
  #uniforms = {
    depths: { value: this.#solid.depthTexture },
    projection: { value: null },
    reach: { value: 1 },
    occlusion: { value: this.#occlusion.texture },
    size: { value: new Vector2() },
  };
  #pass = overAll(this.#uniforms, kOcclusion);
  /** Darkens what is drawn before it. */
  overlay = overAll(this.#uniforms, kApplied, {
    blending: CustomBlending,
    blendSrc: ZeroFactor,
    blendDst: SrcColorFactor,
  });

  /** `scale`: the size of the shading as part of the picture's. */
  constructor(scale) {
    this.#scale = scale;
    this.overlay.renderOrder = 0.5;
  }

  /** Frees what the graphics card holds; the next picture makes it anew. */
  dispose() {
    for (const target of [this.#solid, this.#occlusion]) target.dispose();
    free(this.#pass);
  }

  /** Prepares the overlay for a picture of a level with a radius. */
  prepare(renderer, scene, camera, radius) {
    const { projection, reach, size } = this.#uniforms;
    renderer.getDrawingBufferSize(size.value);
    const sides = size.value.toArray().map((side) => Math.max(1, Math.round(side * this.#scale)));
    this.#solid.setSize(...sides);
    this.#occlusion.setSize(...sides);
    projection.value = camera.projectionMatrix;
    reach.value = kReach * radius;
    camera.layers.set(kSolid);
    renderer.setRenderTarget(this.#solid);
    renderer.render(scene, camera);
    camera.layers.set(0);
    renderer.setRenderTarget(this.#occlusion);
    renderer.render(this.#pass, new Camera());
    renderer.setRenderTarget(null);
  }
}
