// The page's data: a description, and the packed bytes of each snapshot (payload.py writes both).

const wordsOf = id => document.getElementById(id).textContent.trim();
const run = JSON.parse(wordsOf("description"));
const counts = {
  units: run.units.length, fibres: run.fibres, heads: run.crown.length, sites: run.siteAzimuth.length,
};

async function bytesOf(text) {
  const packed = Uint8Array.from(atob(text), letter => letter.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream("deflate"));
  return new Response(stream).arrayBuffer();
}

// Arrays in the order in which payload.py packs them. Sites are written as steps from their neighbour, off a straight line.
class Snapshot {
  constructor(about, buffer) {
    const {units, fibres, heads, sites} = counts;
    const thin = units * fibres;
    let at = 0;
    const take = (Type, length) => {
      const array = new Type(buffer, at, length);
      at += array.byteLength;
      return array;
    };
    this.time = about.time;
    this.ends = take(Float32Array, units * (fibres + 1) * 2);
    const line = take(Float32Array, thin * 2);
    this.titin = take(Float32Array, units);
    this.headX = take(Float32Array, units * heads);
    const bonds = this.bonds = {length: about.bonds};
    for (const name of ["strain", "stiffness", "force", "energy"]) bonds[name] = take(Float32Array, about.bonds);
    bonds.head = take(Uint32Array, about.bonds);
    const steps = take(Int16Array, thin * sites);
    bonds.site = take(Uint16Array, about.bonds);
    this.headState = take(Uint8Array, units * heads);
    this.siteState = take(Uint8Array, thin * sites);
    this.siteFactor = take(Uint8Array, thin * sites);  // 255 is 1 or more
    for (const name of ["fibre", "image", "face"]) bonds[name] = take(Uint8Array, about.bonds);
    this.siteX = straightened(line, steps, about.step);
    this.bondOfHead = new Map(Array.from(bonds.head, (head, bond) => [head, bond]));
    this.bondOfSite = new Map(Array.from(bonds.site, (site, bond) => [this.siteOfBond(bond), bond]));
  }

  // The number of a bond's site among all.
  siteOfBond(bond) {
    const unit = Math.floor(this.bonds.head[bond] / counts.heads);
    return siteNumber(unit, this.bonds.fibre[bond], this.bonds.site[bond]);
  }
}

const siteNumber = (unit, fibre, site) => (unit * counts.fibres + fibre - 1) * counts.sites + site;

function straightened(line, steps, step) {
  const x = new Float32Array(steps.length);
  let off = 0;
  for (let i = 0; i < steps.length; i++) {
    const site = i % counts.sites, fibre = (i - site) / counts.sites;
    off = site ? (off + steps[i]) << 16 >> 16 : steps[i];  // 16 bits go round
    x[i] = line[2 * fibre] + line[2 * fibre + 1] * site + off * step;
  }
  return x;
}

const loaded = new Map();  // snapshots by number; a few, as a phone has little room
async function snapshot(number) {
  if (!loaded.has(number)) {
    if (loaded.size > 7) loaded.delete(loaded.keys().next().value);
    loaded.set(number, new Snapshot(run.snapshots[number], await bytesOf(wordsOf(`snapshot-${number}`))));
  }
  return loaded.get(number);
}

// Where things stand [nm]: x along all half-sarcomeres, y and z across.

const along = (unit, x) => run.units[unit].origin + run.units[unit].direction * x;

function headPlace(shown, head) {
  const unit = Math.floor(head / counts.heads), azimuth = run.azimuth[head % counts.heads];
  const {y, z} = run.units[unit], radius = run.radiusMyosin;
  return [along(unit, shown.headX[head]), y + radius * Math.cos(azimuth), z + radius * Math.sin(azimuth)];
}

function sitePlace(shown, unit, fibre, site, image, face = 0) {
  const azimuth = run.siteAzimuth[site] + face * Math.PI, {y, z} = run.units[unit], axis = run.images[image];
  return [along(unit, shown.siteX[siteNumber(unit, fibre, site)]),
          y + axis.y + run.radiusActin * Math.cos(azimuth), z + axis.z + run.radiusActin * Math.sin(azimuth)];
}

function bondEnd(shown, bond) {
  const {head, fibre, site, image, face} = shown.bonds;
  const unit = Math.floor(head[bond] / counts.heads);
  return sitePlace(shown, unit, fibre[bond], site[bond], image[bond], face[bond]);
}
