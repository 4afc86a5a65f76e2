// The lattice as shapes. `drawn` says what is shown of which snapshot, and how.

const drawn = {shown: null, mode: "state", row: null, lit: null, marked: null};

class Scene {
  constructor(canvas) {
    this.renderer = new THREE.WebGLRenderer({canvas, antialias: true, alpha: true, preserveDrawingBuffer: true});
    this.camera = new THREE.PerspectiveCamera(8, 1, 1, 1e6);
    this.camera.up.set(0, 0, 1);
    this.shapes = {
      thick: rods(16, {isCut: true}), thin: rods(6, {isCut: true}), titin: rods(4), sites: balls(), heads: balls(),
      necks: necks(), marker: rods(12), plates: rods(48, {opacity: 0.16}),
    };
    this.world = new THREE.Scene();
    Object.values(this.shapes).forEach(shape => this.world.add(shape.mesh));
    const mean = name => run.units.reduce((sum, unit) => sum + unit[name], 0) / counts.units;
    this.centre = {y: mean("y"), z: mean("z")};
    this.radius = Math.max(...run.units.map(unit => Math.hypot(unit.y - this.centre.y, unit.z - this.centre.z))) + 45;
  }

  // All shapes anew from `drawn`.
  build() {
    const {shown, row} = drawn, {shapes} = this;
    const units = run.units.map((unit, number) => number).filter(number => row === null || run.units[number].row === row);
    const bonds = shown.bonds.length;
    shapes.thick.clear(units.length);
    shapes.thin.clear(units.length * run.images.length);
    shapes.titin.clear(units.length * 12);
    shapes.sites.clear(units.length * run.images.length * counts.sites * run.faces);
    shapes.heads.clear(units.length * counts.heads);
    shapes.necks.clear(units.length * counts.heads * 2);
    shapes.plates.clear(2 * run.inSeries + 2);
    shapes.marker.clear(1);
    for (const unit of units) {
      this.addFilaments(unit);
      this.addSites(unit);
      this.addHeads(unit);
    }
    this.addPlates();
    this.addMarker();
    Object.values(shapes).forEach(shape => shape.show());
    return {units: units.length, bonds};
  }

  isImageDrawn(unit, image) {
    return drawn.row !== null || run.shown[run.units[unit].row][image] === 1;
  }

  addFilaments(unit) {
    const {shown} = drawn, {thick, thin} = this.shapes, {y, z} = run.units[unit];
    const end = (fibre, which) => along(unit, shown.ends[(unit * (counts.fibres + 1) + fibre) * 2 + which]);
    thick.add([end(0, 0), y, z], [end(0, 1), y, z], 0.62 * run.radiusMyosin, PLAIN.thick);
    run.images.forEach((image, number) => {
      if (!this.isImageDrawn(unit, number)) return;
      const [a, b] = [y + image.y, z + image.z];
      thin.add([end(image.fibre, 0), a, b], [end(image.fibre, 1), a, b], 0.45 * run.radiusActin, PLAIN.thin);
    });
    if (!Number.isNaN(shown.titin[unit])) this.addTitin(end(0, 1), end(1, 1), y, z);
  }

  // A spring from the tip of the thick filament to the Z-disc.
  addTitin(tip, disc, y, z) {
    const at = k => [tip + (disc - tip) * k / 12, y, z + (k % 12 ? (k % 2 ? 4 : -4) : 0)];
    for (let k = 0; k < 12; k++) this.shapes.titin.add(at(k), at(k + 1), 0.7, PLAIN.titin);
  }

  addSites(unit) {
    const {shown, mode} = drawn, factors = Array.from({length: 256}, (_, share) => onRamp("rising", share / 255));
    run.images.forEach((image, number) => {
      if (!this.isImageDrawn(unit, number)) return;
      for (let site = 0; site < counts.sites; site++) {
        const at = siteNumber(unit, image.fibre, site), state = shown.siteState[at];
        if (state === 255) continue;
        const tint = mode === "sites" ? SITE_TINTS[state] : mode === "factor" ? factors[shown.siteFactor[at]] : PLAIN.site;
        for (let face = 0; face < run.faces; face++) {
          this.shapes.sites.add(sitePlace(shown, unit, image.fibre, site, number, face), null, 1.25, tint);
        }
      }
    });
  }

  // A head that isn't bound sits on the backbone; of one that is the motor stands at its site, and a neck leads there.
  addHeads(unit) {
    const {shown, mode, lit} = drawn, {heads, necks} = this.shapes, {y, z} = run.units[unit];
    for (let i = 0; i < counts.heads; i++) {
      const head = unit * counts.heads + i, bond = shown.bondOfHead.get(head);
      const isLit = !lit || (bond !== undefined && lit(bond));
      const tint = isLit ? headColour(mode, shown, head, bond) : PLAIN.unlit;
      const place = headPlace(shown, head), isLink = run.kinds[head] === 2;
      if (isLink) place[0] += 3 * run.units[unit].direction;  // beside the head of the same place
      if (bond === undefined && lit) continue;
      const root = [place[0], y + 0.6 * (place[1] - y), z + 0.6 * (place[2] - z)];
      if (bond === undefined) {
        necks.add(root, place, 0.6, tint);
        heads.add(place, null, isLink ? 1.5 : 2.2, tint);
      } else {
        const end = bondEnd(shown, bond);
        necks.add(root, place, isLit ? 0.9 : 0.3, tint);
        necks.add(place, end, isLit ? 0.9 : 0.3, tint);
        heads.add(end, null, isLit ? (isLink ? 1.8 : 2.6) : 0.8, tint);
      }
    }
  }

  // Z-discs where thin filaments end, M-lines in the middles.
  addPlates() {
    const {shown, row} = drawn, width = row === null ? this.radius : 45;
    const {y, z} = row === null ? this.centre : run.units[row * run.inSeries];
    for (let place = 0; place < run.inSeries; place++) {
      const unit = (row || 0) * run.inSeries + place, {direction} = run.units[unit];
      const disc = along(unit, shown.ends[(unit * (counts.fibres + 1) + 1) * 2 + 1]);
      const middle = along(unit, shown.ends[unit * (counts.fibres + 1) * 2]);
      this.shapes.plates.add([disc - 3 * direction, y, z], [disc + 3 * direction, y, z], width, PLAIN.plate);
      this.shapes.plates.add([middle - 1, y, z], [middle + 1, y, z], 0.8 * width, PLAIN.plate);
    }
  }

  addMarker() {
    const place = drawn.marked && drawn.marked.place(drawn.shown);
    if (!place) return;
    this.shapes.marker.add([place[0] - 5, place[1], place[2]], [place[0] + 5, place[1], place[2]], 1.2, PLAIN.marked);
  }

  // The part of the lattice that is shown [nm].
  cut([low, high]) {
    section.low.value.set(...low);
    section.high.value.set(...high);
  }

  // From x of the first end to that of the last, of all filaments.
  extent() {
    const ends = drawn.shown.ends, perUnit = (counts.fibres + 1) * 2;
    let low = Infinity, high = -Infinity;
    ends.forEach((x, i) => {
      const here = along(Math.floor(i / perUnit), x);
      low = Math.min(low, here);
      high = Math.max(high, here);
    });
    return [low, high];
  }

  draw() {
    this.isWaiting = false;
    this.fitDepth();
    section.height.value = this.renderer.domElement.height;
    this.renderer.render(this.world, this.camera);
  }

  // All of the lattice lies between the two planes that bound what the camera sees.
  fitDepth() {
    const {camera, controls} = this, [low, high] = this.extent();
    const distance = camera.position.distanceTo(controls.target), reach = high - low + 2 * this.radius;
    camera.near = Math.max(distance / 100, distance - reach);
    camera.far = distance + reach;
    camera.updateProjectionMatrix();
  }

  // Draws with the next frame of the display, however often it is asked for.
  drawSoon() {
    if (!this.isWaiting) requestAnimationFrame(() => { if (this.isWaiting) this.draw(); });
    this.isWaiting = true;
  }
}
