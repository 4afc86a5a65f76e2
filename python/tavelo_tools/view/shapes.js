// Many balls, rods or necks in one draw call each. Where there is no graphics card every triangle costs some microseconds, so
// a ball is one point, shaded as a ball, and a neck a ribbon that turns to the camera; filaments are instanced rods.

// What is shown lies between low and high; the height is the picture's [pixels].
const section = {low: {value: new THREE.Vector3()}, high: {value: new THREE.Vector3()}, height: {value: 1}};

const common = `
  attribute vec3 tint;
  attribute float size;
  uniform vec3 low, high;
  varying vec3 facing;
  varying vec3 colour;
  const vec4 nowhere = vec4(2.0, 2.0, 2.0, 1.0);
  bool isWithin(vec3 place) {
    return all(greaterThanEqual(place, low)) && all(lessThanEqual(place, high));
  }`;

const lit = `
  varying vec3 facing;
  varying vec3 colour;
  uniform float opacity;
  vec4 lit(vec3 normal) {
    float light = 0.5 + 0.5 * max(0.0, dot(normalize(normal), normalize(vec3(0.3, 0.5, 0.8))));
    return vec4(colour * light, opacity);
  }`;

const surfaceShader = `${lit}
  void main() { gl_FragColor = lit(facing); }`;

const ballShader = `${common}
  uniform float height;
  void main() {
    colour = tint;
    gl_Position = isWithin(position) ? projectionMatrix * modelViewMatrix * vec4(position, 1.0) : nowhere;
    gl_PointSize = size * height * projectionMatrix[1][1] / gl_Position.w;
  }`;

const ballSurfaceShader = `${lit}
  void main() {
    vec2 off = vec2(2.0, -2.0) * (gl_PointCoord - 0.5);
    float depth = 1.0 - dot(off, off);
    if (depth < 0.0) discard;
    gl_FragColor = lit(vec3(off, sqrt(depth)));
  }`;

// A filament is cut at the section's ends along x; other rods are shown as a whole, where their middle is within.
const rodShader = `${common}
  attribute vec3 start, end;
  uniform bool isCut;
  void main() {
    vec3 a = start, b = end;
    if (isCut) {
      a.x = clamp(a.x, low.x, high.x);
      b.x = clamp(b.x, low.x, high.x);
    }
    vec3 along = b - a;
    bool isShown = isWithin(0.5 * (a + b)) && dot(along, along) > 0.0;
    vec3 x = normalize(isShown ? along : vec3(1.0, 0.0, 0.0));
    vec3 y = normalize(cross(x, abs(x.z) < 0.9 ? vec3(0.0, 0.0, 1.0) : vec3(0.0, 1.0, 0.0)));
    vec3 z = cross(x, y);
    facing = normalMatrix * (normal.x * x + normal.y * y + normal.z * z);
    colour = tint;
    vec3 place = a + position.x * along + size * (position.y * y + position.z * z);
    gl_Position = isShown ? projectionMatrix * modelViewMatrix * vec4(place, 1.0) : nowhere;
  }`;

const neckShader = `${common}
  attribute vec3 start, end;
  void main() {
    vec4 a = modelViewMatrix * vec4(start, 1.0), b = modelViewMatrix * vec4(end, 1.0);
    vec2 along = b.xy - a.xy;
    vec2 aside = length(along) > 0.0 ? normalize(vec2(-along.y, along.x)) : vec2(1.0, 0.0);
    facing = vec3(position.y * aside, 0.7);
    colour = tint;
    vec4 place = mix(a, b, position.x) + vec4(size * position.y * aside, 0.0, 0.0);
    gl_Position = isWithin(0.5 * (start + end)) ? projectionMatrix * place : nowhere;
  }`;

class Shapes {
  constructor(geometry, vertexShader, fragmentShader, fields, {isCut = false, opacity = 1} = {}) {
    const material = new THREE.ShaderMaterial({
      vertexShader, fragmentShader, transparent: opacity < 1, depthWrite: opacity === 1, side: THREE.DoubleSide,
      uniforms: {...section, isCut: {value: isCut}, opacity: {value: opacity}},
    });
    this.isPoints = geometry === null;
    this.geometry = this.isPoints ? new THREE.BufferGeometry() : new THREE.InstancedBufferGeometry().copy(geometry);
    this.mesh = this.isPoints ? new THREE.Points(this.geometry, material) : new THREE.Mesh(this.geometry, material);
    this.mesh.frustumCulled = false;
    this.fields = fields;
    this.room = -1;
  }

  // Begins anew, with room for so many.
  clear(room) {
    this.count = 0;
    if (room <= this.room && room > this.room / 4) return;
    this.room = room;
    const Attribute = this.isPoints ? THREE.BufferAttribute : THREE.InstancedBufferAttribute;
    for (const [name, width] of Object.entries(this.fields)) {
      this[name] = new Float32Array(room * width);
      this.geometry.setAttribute(name, new Attribute(this[name], width));
    }
  }

  add(start, end, size, tint) {
    const at = this.count++;
    this[this.isPoints ? "position" : "start"].set(start, 3 * at);
    if (end) this.end.set(end, 3 * at);
    this.tint.set(tint, 3 * at);
    this.size[at] = size;
  }

  show() {
    if (this.isPoints) this.geometry.setDrawRange(0, this.count);
    else this.geometry.maxInstancedCount = this.count;
    this.mesh.visible = this.count > 0;
    for (const name of Object.keys(this.fields)) this.geometry.attributes[name].needsUpdate = true;
  }
}

const balls = () => new Shapes(null, ballShader, ballSurfaceShader, {position: 3, tint: 3, size: 1});
const ends = {start: 3, end: 3, tint: 3, size: 1};

function rods(sides, options) {
  const cylinder = new THREE.CylinderBufferGeometry(1, 1, 1, sides, 1, false);
  cylinder.rotateZ(-Math.PI / 2).translate(0.5, 0, 0);
  return new Shapes(cylinder, rodShader, surfaceShader, ends, options);
}

const necks = () => new Shapes(new THREE.PlaneBufferGeometry(1, 2).translate(0.5, 0, 0), neckShader, surfaceShader, ends);
