// What stands under the pointer, and all that is known of it.

const kindNames = ["slow head", "fast head", "protein-C"];
const siteStateName = state => SITES[state][0];
const fixed = (value, digits = 2) => value.toFixed(digits).replace(/^-(0\.?0*)$/, "$1");

class Picked {
  constructor(what, number, image) {
    Object.assign(this, {what, number, image});
    const per = what === "head" ? counts.heads : counts.fibres * counts.sites;
    this.unit = Math.floor(number / per);
    this.within = number % per;
    this.fibre = Math.floor(this.within / counts.sites) + 1;
    this.site = this.within % counts.sites;
  }

  bond(shown) {
    return (this.what === "head" ? shown.bondOfHead : shown.bondOfSite).get(this.number);
  }

  place(shown) {
    if (this.what === "site") return sitePlace(shown, this.unit, this.fibre, this.site, this.image);
    const bond = this.bond(shown);
    return bond === undefined ? headPlace(shown, this.number) : bondEnd(shown, bond);
  }

  // Pairs of a name and a text.
  facts(shown) {
    const unit = run.units[this.unit], bond = this.bond(shown);
    const where = [["filament", `${unit.filament}: row ${unit.row + 1}, half-sarcomere ${unit.place + 1}`
      + (unit.direction < 0 ? ", mirrored" : "")]];
    const own = this.what === "head" ? this.headFacts(shown) : this.siteFacts(shown);
    return [...own, ...where, ...(bond === undefined ? [["bond", "none"]] : this.bondFacts(shown, bond))];
  }

  headFacts(shown) {
    const head = this.within, kind = run.kinds[this.number];
    return [
      ["", `Head ${head}`],
      ["kind", kindNames[kind]],
      ["crown", `${run.crown[head]}, number ${run.number[head]} in it`],
      ["state", kind === 2 ? String(shown.headState[this.number]) : stateName(shown.headState[this.number])],
      ["at", `${fixed(shown.headX[this.number])} nm from the middle of the sarcomere`],
      ["azimuth", `${fixed(run.azimuth[head] * 180 / Math.PI, 1)} degrees`],
    ];
  }

  siteFacts(shown) {
    return [
      ["", `Site ${this.site} of thin filament ${this.fibre}`],
      ["regulation", siteStateName(shown.siteState[this.number])],
      ["binding", `${fixed(shown.siteFactor[this.number] / 255)} times the rate of an open site`],
      ["at", `${fixed(shown.siteX[this.number])} nm from the middle of the sarcomere`],
      ["azimuth", `${fixed(run.siteAzimuth[this.site] * 180 / Math.PI, 1)} degrees`],
    ];
  }

  bondFacts(shown, bond) {
    const {head, fibre, site, strain, force, stiffness, energy} = shown.bonds;
    const partner = this.what === "head" ? `site ${site[bond]} of thin filament ${fibre[bond]}, `
      + siteStateName(shown.siteState[shown.siteOfBond(bond)]) : `head ${head[bond] % counts.heads}`;
    return [
      ["bound to", partner],
      ["strain", `${fixed(strain[bond])} nm, lever included`],
      ["force", `${fixed(force[bond])} pN`],
      ["stiffness", `${fixed(stiffness[bond])} pN/nm`],
      ["energy", `${fixed(energy[bond])} pN nm`],
    ];
  }
}

// The head or site nearest to a point of the canvas [CSS pixels], within a finger's breadth; of those as near the one in front.
function pickAt(scene, x, y) {
  const {clientWidth, clientHeight} = scene.renderer.domElement, {shown} = drawn;
  const {low, high} = section, point = new THREE.Vector3();
  let best = null, least = 14;
  scene.fitDepth();
  scene.camera.updateMatrixWorld();
  const look = (place, what, number, image) => {
    point.set(...place);
    if (point.clone().clamp(low.value, high.value).distanceToSquared(point) > 0) return;
    point.project(scene.camera);
    if (point.z > 1) return;
    const off = Math.hypot((point.x + 1) / 2 * clientWidth - x, (1 - point.y) / 2 * clientHeight - y);
    const score = off + 5 * (point.z + 1) + (what === "site" ? 2 : 0);
    if (off < 14 && score < least) [least, best] = [score, new Picked(what, number, image)];
  };
  for (let unit = 0; unit < counts.units; unit++) {
    if (drawn.row !== null && run.units[unit].row !== drawn.row) continue;
    for (let i = 0; i < counts.heads; i++) {
      const head = new Picked("head", unit * counts.heads + i);
      const bond = head.bond(shown);
      if (drawn.lit && (bond === undefined || !drawn.lit(bond))) continue;
      look(head.place(shown), "head", head.number);
    }
    run.images.forEach((image, number) => {
      if (!scene.isImageDrawn(unit, number)) return;
      for (let site = 0; site < counts.sites; site++) {
        const at = siteNumber(unit, image.fibre, site);
        if (shown.siteState[at] !== 255) look(sitePlace(shown, unit, image.fibre, site, number), "site", at, number);
      }
    });
  }
  return best;
}
