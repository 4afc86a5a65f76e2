// The histogram of strains, in which a range can be brushed, and the force trace, on which a time can be chosen.

const css = name => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

class Chart {
  constructor(canvas, title) {
    this.canvas = canvas;
    this.title = title;
    this.left = 44;
    this.bottom = 20;
    this.top = 18;
  }

  begin(x, y) {
    const ratio = window.devicePixelRatio || 1, {clientWidth, clientHeight} = this.canvas;
    this.canvas.width = clientWidth * ratio;
    this.canvas.height = clientHeight * ratio;
    [this.width, this.height, this.xRange, this.yRange] = [clientWidth, clientHeight, x, y];
    const pen = this.canvas.getContext("2d");
    pen.setTransform(ratio, 0, 0, ratio, 0, 0);
    pen.clearRect(0, 0, clientWidth, clientHeight);
    pen.font = "11px system-ui, sans-serif";
    pen.fillStyle = css("--muted");
    pen.strokeStyle = css("--grid");
    pen.fillText(this.title, 2, 11);
    for (const value of ticks(x, 6)) {
      pen.textAlign = "center";
      pen.fillText(shortly(value), this.atX(value), this.height - 5);
    }
    for (const value of ticks(y, 3)) {
      pen.textAlign = "right";
      pen.fillText(shortly(value), this.left - 4, this.atY(value) + 4);
      pen.beginPath();
      pen.moveTo(this.left, this.atY(value));
      pen.lineTo(this.width - 4, this.atY(value));
      pen.stroke();
    }
    pen.textAlign = "left";
    return pen;
  }

  atX(value) {
    return this.left + (value - this.xRange[0]) / (this.xRange[1] - this.xRange[0]) * (this.width - this.left - 8);
  }

  atY(value) {
    const share = (value - this.yRange[0]) / (this.yRange[1] - this.yRange[0]);
    return this.height - this.bottom - share * (this.height - this.bottom - this.top);
  }

  valueAt(event) {
    const x = event.clientX - this.canvas.getBoundingClientRect().left;
    return this.xRange[0] + (x - this.left) / (this.width - this.left - 8) * (this.xRange[1] - this.xRange[0]);
  }
}

// Round numbers, about so many.
function ticks([low, high], many) {
  const rough = (high - low) / many, power = 10 ** Math.floor(Math.log10(rough));
  const step = [1, 2, 5, 10].map(factor => factor * power).find(size => size >= rough);
  const found = [];
  for (let value = Math.ceil(low / step) * step; value <= high + 1e-9 * step; value += step) found.push(value);
  return found;
}

const shortly = value => String(+value.toPrecision(6));

const histogram = {
  chart: new Chart(document.getElementById("histogram"), "Bonds by strain, lever included [nm]; drag to choose"),
  bins: 40,

  draw(values, range) {
    const most = run.ranges.strain || 1, low = -most, width = 2 * most / this.bins;
    const heights = new Array(this.bins).fill(0);
    for (const value of values) heights[Math.min(this.bins - 1, Math.max(0, Math.floor((value - low) / width)))]++;
    const pen = this.chart.begin([low, most], [0, Math.max(1, ...heights)]);
    heights.forEach((height, bin) => {
      const from = low + bin * width, isLit = !range || (from + width > range[0] && from < range[1]);
      pen.fillStyle = isLit ? hex(measureColour("strain", from + width / 2)) : css("--grid");
      const x = this.chart.atX(from), y = this.chart.atY(height);
      pen.fillRect(x, y, this.chart.atX(from + width) - x - 1, this.chart.atY(0) - y);
    });
    if (!range) return;
    pen.strokeStyle = css("--ink");
    const [x, end] = range.map(value => this.chart.atX(value));
    pen.strokeRect(x, this.chart.top, end - x, this.chart.atY(0) - this.chart.top);
  },
};

const trace = {
  chart: new Chart(document.getElementById("trace"), "Force [pN per thick filament] over time; click to choose a snapshot"),

  draw(now) {
    const {time, force} = run.trace, times = run.snapshots.map(about => about.time);
    const from = Math.min(...time.slice(0, 1), ...times), to = Math.max(...time.slice(-1), ...times);
    const ends = to > from ? [from, to] : [from - 0.5, to + 0.5];
    const lowest = Math.min(0, ...force), highest = Math.max(...force, lowest + 1);
    const pen = this.chart.begin(ends, [lowest, highest]);
    pen.strokeStyle = css("--series-0");
    pen.lineWidth = 1.4;
    pen.beginPath();
    time.forEach((t, i) => pen.lineTo(this.chart.atX(t), this.chart.atY(force[i])));
    pen.stroke();
    pen.fillStyle = css("--muted");
    for (const t of times) pen.fillRect(this.chart.atX(t) - 1, this.chart.atY(lowest) - 4, 2, 4);
    pen.fillStyle = css("--series-1");
    pen.fillRect(this.chart.atX(now) - 1, this.chart.top, 2, this.chart.atY(lowest) - this.chart.top);
  },
};
