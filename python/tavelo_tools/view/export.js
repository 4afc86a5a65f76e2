// Pictures to keep: one at print size, or a series as PNG files in a zip archive.

const PRINT_WIDTH = 3600, FRAME_WIDTH = 1280, TURNTABLE_FRAMES = 72;

// The scene as a PNG of that width, on a transparent ground, in the shape of the canvas.
async function picture(scene, width) {
  const canvas = scene.renderer.domElement, {width: w, height: h} = canvas;
  const most = scene.renderer.capabilities.maxTextureSize, scale = Math.min(width, most, most * w / h) / w;
  scene.renderer.setPixelRatio(1);
  scene.renderer.setSize(Math.round(w * scale), Math.round(h * scale), false);
  scene.draw();
  const png = await new Promise(done => canvas.toBlob(done, "image/png"));
  scene.renderer.setSize(w, h, false);
  scene.draw();
  return new Uint8Array(await png.arrayBuffer());
}

// Frames of a full turn about the vertical, or of all snapshots.
async function frames(scene, kind, show, report) {
  const files = [], controls = scene.controls, start = scene.camera.position.clone();
  const number = kind === "turntable" ? TURNTABLE_FRAMES : run.snapshots.length;
  for (let i = 0; i < number; i++) {
    report(`frame ${i + 1} of ${number}`);
    if (kind === "turntable") {
      const arm = start.clone().sub(controls.target).applyAxisAngle(scene.camera.up, 2 * Math.PI * i / number);
      scene.camera.position.copy(controls.target).add(arm);
      scene.camera.lookAt(controls.target);
    } else {
      await show(i);
    }
    files.push([`frame-${String(i).padStart(4, "0")}.png`, await picture(scene, FRAME_WIDTH)]);
  }
  scene.camera.position.copy(start);
  controls.update();
  return files;
}

const crcTable = Uint32Array.from({length: 256}, (_, n) => {
  for (let k = 0; k < 8; k++) n = n & 1 ? 0xedb88320 ^ n >>> 1 : n >>> 1;
  return n;
});

function crc32(bytes) {
  let crc = -1;
  for (const byte of bytes) crc = crcTable[(crc ^ byte) & 255] ^ crc >>> 8;
  return ~crc >>> 0;
}

// A zip archive of files that are kept as they are: PNG is compressed already.
function zip(files) {
  const parts = [], directory = [];
  let at = 0;
  for (const [name, bytes] of files) {
    const letters = new TextEncoder().encode(name);
    // Version 2.0, no flags, kept; 1 January 1980.
    const common = [20, 0, 0, 0, 0, 0, 0, 0, 33, 0, ...word(crc32(bytes)), ...word(bytes.length), ...word(bytes.length),
                    letters.length, 0, 0, 0];
    const head = Uint8Array.from([0x50, 0x4b, 3, 4, ...common, ...letters]);
    directory.push(Uint8Array.from([0x50, 0x4b, 1, 2, 20, 0, ...common, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, ...word(at), ...letters]));
    parts.push(head, bytes);
    at += head.length + bytes.length;
  }
  const size = directory.reduce((sum, entry) => sum + entry.length, 0);
  const number = [files.length & 255, files.length >> 8];
  const end = Uint8Array.from([0x50, 0x4b, 5, 6, 0, 0, 0, 0, ...number, ...number, ...word(size), ...word(at), 0, 0]);
  return new Blob([...parts, ...directory, end], {type: "application/zip"});
}

const word = value => [0, 8, 16, 24].map(shift => value >>> shift & 255);

function save(blob, name) {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(blob);
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}
