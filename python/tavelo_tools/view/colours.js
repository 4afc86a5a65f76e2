// What each thing is coloured by. All maps can be told apart by people with any common colour blindness: qualitative ones
// after M. Okabe and K. Ito, ramps from blue to orange, and from dark blue to yellow.

const rgb = text => [1, 3, 5].map(at => parseInt(text.slice(at, at + 2), 16) / 255);
const hex = colour => "#" + colour.map(part => Math.round(255 * part).toString(16).padStart(2, "0")).join("");

const STATES = ["#8d949e", "#e69f00", "#56b4e9", "#009e73", "#f0e442", "#0072b2", "#d55e00", "#cc79a7", "#8c5a2b"].map(rgb);
const SITES = {0: ["open", "#e69f00"], 2: ["closed", "#56b4e9"], 1: ["blocked", "#0b4f8a"], 3: ["switched off", "#8d949e"]};
const SITE_TINTS = [0, 1, 2, 3].map(state => rgb(SITES[state][1]));
const RAMPS = {
  diverging: ["#0b4f8a", "#56a0d8", "#e6e6e6", "#eaa14f", "#b34a00"].map(rgb),
  rising: ["#00224e", "#434e6c", "#7d7c78", "#bcae6c", "#fee838"].map(rgb),
};
const PLAIN = {
  thick: rgb("#6b7280"), thin: rgb("#c9bd96"), site: rgb("#b3a778"), detached: rgb("#a3a9b3"), unlit: rgb("#8d949e"),
  titin: rgb("#9467bd"), proteinC: rgb("#4a2c6e"), plate: rgb("#7d8590"), marked: rgb("#ff2fd0"),
};

// What bonds and sites can be coloured by beside their state.
const MEASURES = {
  strain: {title: "Strain, lever included [nm]", ramp: "diverging"},
  force: {title: "Force [pN]", ramp: "diverging"},
  energy: {title: "Energy [pN nm]", ramp: "rising"},
  factor: {title: "Factor of the site's rate of binding", ramp: "rising"},
};
const ofSites = mode => mode === "sites" || mode === "factor";

function onRamp(ramp, share) {
  const colours = RAMPS[ramp], place = Math.min(Math.max(share, 0), 1) * (colours.length - 1);
  const at = Math.min(Math.floor(place), colours.length - 2), rest = place - at;
  return colours[at].map((part, k) => part + rest * (colours[at + 1][k] - part));
}

// From value to share of the ramp, the same for all snapshots.
function rangeOf(name) {
  const most = run.ranges[name] || 1;  // a factor's is 1
  return MEASURES[name].ramp === "diverging" ? [-most, most] : [0, most];
}

function measureColour(name, value) {
  const [low, high] = rangeOf(name);
  return onRamp(MEASURES[name].ramp, (value - low) / (high - low));
}

const stateColour = state => STATES[state % STATES.length];

function headColour(mode, shown, head, bond) {
  if (run.kinds[head] === 2) return PLAIN.proteinC;
  if (mode === "state") return stateColour(shown.headState[head]);
  if (bond === undefined || ofSites(mode)) return PLAIN.detached;
  return measureColour(mode, shown.bonds[mode][bond]);
}

const stateName = state => run.states[state] ? `${state} ${run.states[state]}` : `state ${state}`;

// The legend's entries: colour, name and how many there are.
function legend(mode, shown) {
  const count = (values, wanted) => values.reduce((sum, value) => sum + (value === wanted), 0);
  if (mode === "sites") {
    return Object.entries(SITES).map(([state, [name, colour]]) => [colour, name, count(shown.siteState, +state)])
      .filter(([, , number]) => number);
  }
  const found = new Map();
  shown.headState.forEach((state, head) => {
    if (run.kinds[head] !== 2) found.set(state, (found.get(state) || 0) + 1);
  });
  return [...found].sort((a, b) => a[0] - b[0]).map(([state, number]) => [hex(stateColour(state)), stateName(state), number]);
}
