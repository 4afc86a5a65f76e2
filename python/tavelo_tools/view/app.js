// The page: what its buttons, sliders and the pointer do.

const $ = id => document.getElementById(id);
const scene = new Scene($("scene"));
const state = {number: 0, playing: null, range: null, section: "all", busy: Promise.resolve()};
const everything = [[-1e7, -1e7, -1e7], [1e7, 1e7, 1e7]];
const slow = 150;  // ms from picture to picture

function visibleBonds() {
  const {shown, row} = drawn, {head} = shown.bonds;
  const isShown = bond => row === null || run.units[Math.floor(head[bond] / counts.heads)].row === row;
  return Array.from(head.keys()).filter(isShown);
}

// Everything anew: the shapes, and what stands beside them.
function refresh() {
  const {shown} = drawn, {strain} = shown.bonds;
  drawn.lit = state.range && (bond => strain[bond] >= state.range[0] && strain[bond] <= state.range[1]);
  scene.build();
  scene.drawSoon();
  const bonds = visibleBonds(), lit = drawn.lit ? bonds.filter(drawn.lit) : bonds;
  histogram.draw(bonds.map(bond => strain[bond]), state.range);
  trace.draw(shown.time);
  $("counts").textContent = drawn.lit
    ? `${lit.length} of ${bonds.length} bonds with ${shortly(state.range[0])} to ${shortly(state.range[1])} nm`
    : `${bonds.length} bonds`;
  $("time").textContent = `${shortly(shown.time)} s`;
  $("slider").value = state.number;
  showLegend();
  showFacts();
}

function showLegend() {
  const measure = MEASURES[drawn.mode];
  if (measure) {
    const [low, high] = rangeOf(drawn.mode).map(shortly), stops = RAMPS[measure.ramp].map(hex).join(",");
    $("legend").innerHTML = `<p>${measure.title}</p><div class="ramp" style="background:linear-gradient(to right,${stops})"></div>
      <p class="ends"><span>${low}</span><span>${high}</span></p>`;
    return;
  }
  const entry = ([colour, name, number]) => `<li><i style="background:${colour}"></i>${name} <span class="muted">${number}</span></li>`;
  const links = run.kinds.includes(2) ? entry([hex(PLAIN.proteinC), "protein-C", run.kinds.filter(kind => kind === 2).length]) : "";
  $("legend").innerHTML = `<ul>${legend(drawn.mode, drawn.shown).map(entry).join("")}${drawn.mode === "state" ? links : ""}</ul>`;
}

function showFacts() {
  const facts = drawn.marked ? drawn.marked.facts(drawn.shown) : [["", "Click a head or a site to read all that is known of it."]];
  $("facts").innerHTML = facts.map(([name, text]) => `<dt>${name}</dt><dd>${text}</dd>`).join("");
}

async function show(number) {
  state.number = Math.min(Math.max(number, 0), run.snapshots.length - 1);
  const wanted = state.number, shown = await snapshot(wanted);
  if (wanted !== state.number) return;  // the slider has gone on
  drawn.shown = shown;
  refresh();
}

function colourBy(mode) {
  drawn.mode = mode;
  $("mode").value = mode;
  refresh();
}

// Keeps only bonds within a range of strains lit; null: all.
function brush(range) {
  state.range = range && [Math.min(...range), Math.max(...range)];
  [$("from").value, $("to").value] = state.range ? state.range.map(value => +value.toFixed(2)) : ["", ""];
  refresh();
}

function showRow(row) {
  drawn.row = row;
  drawn.marked = null;
  $("rows").value = row === null ? "" : row;
  refresh();
  look(state.section);
}

// Sections and views

function middle() {
  const [low, high] = scene.extent(), unit = drawn.row === null ? scene.centre : run.units[drawn.row * run.inSeries];
  return {low, high, x: (low + high) / 2, y: unit.y, z: unit.z, width: drawn.row === null ? scene.radius : 48};
}

// A slice across the filaments, a layer of them along, or all; the place of the slice is a share of what there is.
function cut() {
  const share = +$("place").value, thickness = +$("thickness").value, box = JSON.parse(JSON.stringify(everything));
  const {low, high, y, width} = middle(), axis = {end: 0, side: 1}[state.section];
  if (axis !== undefined) {
    const at = axis === 0 ? low + share * (high - low) : y + (2 * share - 1) * width;
    box[0][axis] = at - thickness / 2;
    box[1][axis] = at + thickness / 2;
    $("section").textContent = `${axis ? "y" : "x"} = ${at.toFixed(0)} ± ${(thickness / 2).toFixed(0)} nm`;
  }
  $("cutting").hidden = axis === undefined;
  scene.cut(box);
}

// Sets the camera so that a view is filled, along a direction.
function look(name) {
  state.section = name;
  document.querySelectorAll("[data-section]").forEach(button => button.setAttribute("aria-pressed", button.dataset.section === name));
  cut();
  const {low, high, x, y, z, width} = middle(), {camera, controls} = scene;
  const length = high - low, tangent = Math.tan(camera.fov * Math.PI / 360), {aspect} = camera;
  const toFit = (across, up) => Math.max(up / 2, across / 2 / aspect) / tangent * 1.08;
  const ways = {
    all: [[-0.45, -1, 0.4], toFit(length * 0.95 + width, 2 * width), x],
    end: [[1, 0, 0], toFit(2 * width, 2 * width), low + +$("place").value * length],
    side: [[0, -1, 0], toFit(length, 2 * width), x],
  };
  const [way, distance, atX] = ways[name];
  controls.target.set(atX, y, z);
  // Not exactly along the vertical or another axis, where turning would have no direction.
  camera.position.set(...way).normalize().multiplyScalar(distance).add(controls.target);
  controls.update();
  scene.drawSoon();
}

function zoom(factor) {
  scene.camera.position.sub(scene.controls.target).multiplyScalar(factor).add(scene.controls.target);
  scene.controls.update();
}

function resize() {
  const {clientWidth, clientHeight} = $("scene");
  scene.renderer.setPixelRatio(Math.min(window.devicePixelRatio || 1, 2));
  scene.renderer.setSize(clientWidth, clientHeight, false);
  scene.camera.aspect = clientWidth / clientHeight;
  scene.camera.updateProjectionMatrix();
  if (drawn.shown) refresh();
}

// What a hand is turning must follow: where pictures take too long, sites are left out until it rests.
const hand = {isTurning: false, last: 0};
function turning() {
  const now = performance.now();
  if (hand.isTurning && hand.last && now - hand.last > slow) scene.shapes.sites.mesh.visible = false;
  hand.last = now;
  scene.drawSoon();
}

function touching(isTurning) {
  Object.assign(hand, {isTurning, last: 0});
  scene.shapes.sites.mesh.visible = scene.shapes.sites.count > 0;
  scene.drawSoon();
}

function pick(x, y) {
  drawn.marked = pickAt(scene, x, y);
  refresh();
  return drawn.marked && drawn.marked.facts(drawn.shown);
}

function play() {
  if (state.playing) {
    clearInterval(state.playing);
    state.playing = null;
  } else {
    state.playing = setInterval(() => {
      state.busy = state.busy.then(() => show((state.number + 1) % run.snapshots.length));
    }, 300);
  }
  $("play").textContent = state.playing ? "Pause" : "Play";
}

async function keep(kind) {
  const report = text => { $("saving").textContent = text; };
  if (kind === "picture") {
    save(new Blob([await picture(scene, PRINT_WIDTH)]), `${run.name}.png`);
  } else {
    save(zip(await frames(scene, kind, show, report)), `${run.name}-${kind}.zip`);
  }
  report("");
}

// Listeners

function listen() {
  scene.controls = new THREE.OrbitControls(scene.camera, $("scene"));
  scene.controls.addEventListener("change", turning);
  scene.controls.addEventListener("start", () => touching(true));
  scene.controls.addEventListener("end", () => touching(false));
  $("slider").max = run.snapshots.length - 1;
  $("slider").oninput = event => show(+event.target.value);
  $("play").onclick = play;
  $("mode").onchange = event => colourBy(event.target.value);
  $("rows").onchange = event => showRow(event.target.value === "" ? null : +event.target.value);
  document.querySelectorAll("[data-section]").forEach(button => { button.onclick = () => look(button.dataset.section); });
  document.querySelectorAll("[data-keep]").forEach(button => { button.onclick = () => keep(button.dataset.keep); });
  $("nearer").onclick = () => zoom(0.7);
  $("farther").onclick = () => zoom(1 / 0.7);
  $("place").oninput = $("thickness").oninput = () => { cut(); scene.drawSoon(); };
  $("from").onchange = $("to").onchange = () => {
    const [from, to] = [$("from").value, $("to").value];
    brush(from === "" || to === "" ? null : [+from, +to]);
  };
  $("all-bonds").onclick = () => brush(null);
  window.addEventListener("resize", resize);
  matchMedia("(prefers-color-scheme: dark)").onchange = refresh;
  listenToCanvases();
}

function listenToCanvases() {
  let pressed;
  $("scene").addEventListener("pointerdown", event => { pressed = event; });
  $("scene").addEventListener("pointerup", event => {
    const wasClick = pressed && Math.hypot(event.clientX - pressed.clientX, event.clientY - pressed.clientY) < 5;
    const box = $("scene").getBoundingClientRect();
    if (wasClick) pick(event.clientX - box.left, event.clientY - box.top);
  });
  const {chart} = histogram;
  let start = null;
  chart.canvas.addEventListener("pointerdown", event => {
    start = chart.valueAt(event);
    chart.canvas.setPointerCapture(event.pointerId);
  });
  chart.canvas.addEventListener("pointermove", event => { if (start !== null) brush([start, chart.valueAt(event)]); });
  chart.canvas.addEventListener("pointerup", event => {
    const end = chart.valueAt(event), width = chart.xRange[1] - chart.xRange[0];
    brush(Math.abs(end - start) < width / 200 ? null : [start, end]);
    start = null;
  });
  trace.chart.canvas.addEventListener("click", event => {
    const wanted = trace.chart.valueAt(event), off = run.snapshots.map(about => Math.abs(about.time - wanted));
    show(off.indexOf(Math.min(...off)));
  });
}

async function begin() {
  run.kinds = new Uint8Array(await bytesOf(run.kind));
  listen();
  drawn.shown = await snapshot(state.number = run.snapshots.length - 1);
  resize();
  look("all");
}

const opened = begin().catch(error => {
  $("alarm").hidden = false;
  $("alarm").textContent = `The view can't be shown: ${error.message}. It needs WebGL and DecompressionStream (browsers from 2023 on).`;
  throw error;
});
// For scripts in the page, and tests.
window.tavelo = {opened, run, counts, scene, drawn, state, show, colourBy, brush, showRow, look, pick, zoom, picture, frames, zip, bondEnd, headPlace, sitePlace};
