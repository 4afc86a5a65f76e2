"""Would catch a scene that is empty or shows heads, sites or bonds elsewhere than the program has them, a mode, brush,
slider or pick that changes nothing or the wrong thing, and files for ParaView with other values."""

import base64
import io
import os
import shutil
import subprocess
import zipfile
from pathlib import Path

import browser
import matplotlib.image
import numpy as np
import pandas as pd
import pytest
from report_test import start
from tavelo_tools import read_run
from tavelo_tools.view.lattice import read_lattice
from vtkmodules.util.numpy_support import vtk_to_numpy
from vtkmodules.vtkIOXML import vtkXMLPolyDataReader

ROOT = Path(__file__).resolve().parents[2]
EXAMPLES = ("isometric", "simple_lattice", "flight_muscle", "tolen_lattice", "series")

# Counts pixels of the scene by the colour of the legend that they have, light and shade left out.
PIXELS = """
const {scene, drawn} = tavelo;
function pixels(colours) {
  scene.draw();
  const canvas = document.createElement("canvas"), from = scene.renderer.domElement;
  [canvas.width, canvas.height] = [from.width, from.height];
  const pen = canvas.getContext("2d");
  pen.drawImage(from, 0, 0);
  const {data} = pen.getImageData(0, 0, canvas.width, canvas.height), counts = colours.map(() => 0);
  const hue = part => part.map(value => value / Math.max(...part, 1));
  const wanted = colours.map(text => hue([1, 3, 5].map(at => parseInt(text.slice(at, at + 2), 16))));
  for (let i = 0; i < data.length; i += 4) {
    if (data[i + 3] < 250) continue;
    const own = hue([data[i], data[i + 1], data[i + 2]]);
    wanted.forEach((w, k) => { if (w.every((part, j) => Math.abs(part - own[j]) < 0.03)) counts[k]++; });
  }
  return counts;
}
"""
TRY_ALL = (
    PIXELS
    + """
await tavelo.opened;
const {length} = drawn.shown.bonds, all = [...Array(length).keys()], ORANGE = "#e69f00", UNLIT = "#8d949e";
const result = {
  ends: all.map(bond => tavelo.bondEnd(drawn.shown, bond)),
  feet: all.map(bond => tavelo.headPlace(drawn.shown, drawn.shown.bonds.head[bond])),
  time: drawn.shown.time,
};
// One row, without discs before or behind it.
tavelo.showRow(0);
const [place, thickness] = ["place", "thickness"].map(id => document.getElementById(id));
[thickness.max, thickness.value, place.value] = [800, 800, 1 - 0.5 / tavelo.run.inSeries];
tavelo.look("end");
const {low, high} = scene.shapes.sites.mesh.material.uniforms;
result.inSight = all.filter(bond => drawn.shown.bonds.head[bond] < tavelo.counts.heads
  && result.ends[bond][0] > low.value.x && result.ends[bond][0] < high.value.x);
result.endOn = pixels([ORANGE, "#56b4e9", UNLIT, "#6b7280", "#b3a778"]);
tavelo.colourBy("sites");
result.sites = pixels([ORANGE, "#b3a778"]);
tavelo.colourBy("strain");
result.strain = pixels([ORANGE]);
tavelo.colourBy("state");
tavelo.look("side");
tavelo.zoom(0.12);
result.sideOn = pixels([UNLIT, "#6b7280", "#b3a778"]);
tavelo.showRow(null);
tavelo.brush([4, 2]);
result.brushed = document.getElementById("counts").textContent;
result.lit = all.filter(bond => drawn.lit(bond)).length;
tavelo.brush(null);
tavelo.showRow(0);
tavelo.look("side");
tavelo.zoom(0.1);
scene.draw();
const near = scene.controls.target.x - 30;
const wanted = all.filter(bond => tavelo.bondEnd(drawn.shown, bond)[1] < 5
  && drawn.shown.bonds.head[bond] < tavelo.counts.heads)
  .sort((a, b) => Math.abs(result.ends[a][0] - near) - Math.abs(result.ends[b][0] - near))[0];
const at = new THREE.Vector3(...result.ends[wanted]).project(scene.camera), {clientWidth, clientHeight} = scene.renderer.domElement;
result.picked = tavelo.pick((at.x + 1) / 2 * clientWidth, (1 - at.y) / 2 * clientHeight);
result.wanted = wanted;
const png = await tavelo.picture(scene, 900);
const archive = new Uint8Array(await tavelo.zip([["frame-0.png", png], ["second", png.slice(0, 9)]]).arrayBuffer());
result.archive = btoa(archive.reduce((text, byte) => text + String.fromCharCode(byte), ""));
await tavelo.show(0);
result.first = [drawn.shown.time, drawn.shown.bonds.length, document.getElementById("time").textContent];
return result;
"""
)


def short_run(example: str, directory: Path) -> Path:
    """60 steps with a snapshot in the middle and at the end."""
    directory.mkdir()
    for file in (ROOT / "examples" / example).glob("*.prm"):
        shutil.copy(file, directory)
    (directory / "protocol.dat").write_text("0 0.0005 0 0 0\n0.03 0.0005 0 0 0\n")
    for name in ("WritingLatticeSteps.dat", "WritingDistributionSteps.dat"):
        (directory / name).write_text("times\n0.015\n0.03\n")
    if example not in ("simple_lattice", "series"):
        numbers = directory / "numeric_mc.prm"
        numbers.write_text(numbers.read_text() + "\nsubsection monte_carlo\n set filaments = 2\nend\n")
    subprocess.run([os.environ["TAVELO"], "-q"], cwd=directory, check=True, capture_output=True)
    return directory


@pytest.fixture(scope="module", params=EXAMPLES)
def run_directory(request: pytest.FixtureRequest, tmp_path_factory: pytest.TempPathFactory) -> Path:
    return short_run(request.param, tmp_path_factory.mktemp("view") / request.param)


def world(directory: Path) -> pd.DataFrame:
    """The bonds of the last snapshot in the coordinates of the series, from the files of snapshots of bonds; those
    that the two kinds of files don't share, as heads have just let go, are no numbers there."""
    run = read_run(directory)
    key = ["time", "filament", "head"]
    bonds = run["lattice_bonds"][key].merge(run["bonds"], "left", key)
    bonds = bonds[bonds["time"] == bonds["time"].max()].reset_index(drop=True)
    assert bonds["force"].notna().mean() > 0.9
    place = bonds["filament"] % (4 if directory.name == "series" else 1)
    # Mirrored at the middle, and joined where thin filaments end: at 378 * 2.77 nm, at rest.
    for name in ("x", "x_head"):
        bonds[name] = (1 - 2 * (place % 2)) * bonds[name] - 2 * (place // 2) * 378 * 2.77
    return bonds


def same(found: np.ndarray, expected: pd.DataFrame) -> bool:
    """Where numbers are known."""
    known = expected.notna().to_numpy()
    return np.allclose(found[known], expected.to_numpy()[known], atol=2e-3)


def test_the_page_shows_what_the_run_has(run_directory: Path) -> None:
    result = start("tavelo-view", run_directory)
    assert result.returncode == 0
    with browser.Tab(run_directory / "view.html", (820, 560)) as tab:
        seen = tab.evaluate(TRY_ALL)
    assert tab.console == [] and isinstance(seen, dict)
    bonds = world(run_directory)
    assert len(seen["ends"]) == len(bonds) > 10 and seen["time"] == 0.03
    ends, feet = np.array(seen["ends"]), np.array(seen["feet"])
    assert same(ends[:, 0], bonds["x"]) and same(feet[:, 0], bonds["x_head"])
    if bonds["y"].notna().any():
        # Each filament stands somewhere, and its bonds round it.
        axes = pd.DataFrame(feet[:, 1:] - bonds[["y_head", "z_head"]].to_numpy()).groupby(bonds["filament"])
        assert (axes.max() - axes.min() < 1e-3).all(axis=None)
        assert same(ends[:, 1:] - axes.transform("mean").to_numpy(), bonds[["y", "z"]])
    else:  # 7 nm from one axis, 3.5 nm from one 30 nm away
        assert np.hypot(*(ends - feet)[:, 1:].T).min() > 30 - 7 - 3.5 - 0.01
    # Heads, bound in either state and detached, by colours that Tolen's detached heads have, too; thick filaments, sites.
    in_sight = set(bonds["state"].loc[seen["inSight"]].dropna())
    if run_directory.name != "tolen_lattice":
        assert [count > 10 for count in seen["endOn"][:2]] == [state in in_sight for state in (1, 2)]
        assert min(seen["endOn"][2], seen["sideOn"][0]) > 50
    assert min(seen["endOn"][3:] + seen["sideOn"][1:]) > 50
    assert seen["sites"][0] > 200 > seen["sites"][1] and seen["strain"][0] < seen["sites"][0] / 2
    own = read_run(run_directory)["lattice_bonds"]
    strain = own[own["time"] == 0.03]["strain_with_lever"].to_numpy()
    assert same(strain * 1.0, bonds["force"] / bonds["stiffness"])  # linear springs
    lit = int(np.sum((strain >= 2) & (strain <= 4)))
    assert seen["lit"] == lit and seen["brushed"] == f"{lit} of {len(bonds)} bonds with 2 to 4 nm"
    first = int((own["time"] == 0.015).sum())
    assert seen["first"] == [0.015, first, "0.015 s"]
    with zipfile.ZipFile(io.BytesIO(base64.b64decode(seen["archive"]))) as archive:
        assert archive.testzip() is None and archive.namelist() == ["frame-0.png", "second"]
        picture = matplotlib.image.imread(archive.open("frame-0.png"), format="png")
    assert picture.shape[1:] == (900, 4) and picture[0, 0, 3] == 0 and picture[:, :, 3].max() == 1
    facts, bond = dict(seen["picked"]), own[own["time"] == 0.03].iloc[seen["wanted"]]
    assert facts["force"] == f"{bond['force']:.2f} pN" and facts["energy"] == f"{bond['energy']:.2f} pN nm"
    site = f"site {bond['site']:.0f} of thin filament {bond['fibre']:.0f}"
    assert (facts[""] == f"Head {bond['head']:.0f}") != (facts[""].lower() == site)


def test_paraview_gets_the_same(run_directory: Path) -> None:
    result = start("tavelo-view", run_directory, "--vtk", run_directory / "vtk")
    assert result.stdout.splitlines()[1] == str(run_directory / "vtk" / f"{run_directory.name}.pvd")
    reader = vtkXMLPolyDataReader()
    reader.SetFileName(str(run_directory / "vtk" / f"{run_directory.name}-0001.vtp"))
    reader.Update()
    data = reader.GetOutput()
    arrays = data.GetPointData()
    names = [arrays.GetArrayName(i) for i in range(arrays.GetNumberOfArrays())]
    points = pd.DataFrame({name: vtk_to_numpy(arrays.GetArray(name)) for name in names})
    points[["x", "y", "z"]] = vtk_to_numpy(data.GetPoints().GetData())
    bonds = world(run_directory)
    held = points[points["part"] == 4].merge(bonds, left_on=["filament", "number"], right_on=["filament", "head"])
    assert len(held) == len(bonds)
    for name in ("x", "force", "energy", "fibre", "state"):
        assert same(held[f"{name}_x"].to_numpy(), held[f"{name}_y"]), name
    lattice = read_lattice(read_run(run_directory), 10**6)
    assert (points["part"] == 0).sum() == lattice.kind.size
    lines = vtk_to_numpy(data.GetCellData().GetArray("part"))
    assert (lines == 4).sum() == len(bonds) and (lines == 2).sum() == len(lattice.units)
    assert data.GetNumberOfCells() == len(lines)


def test_many_rows_are_thinned_with_a_note(run_directory: Path) -> None:
    lattice = read_lattice(read_run(run_directory), 1)
    assert lattice.rows == 1 and any("1 of" in note for note in lattice.notes)


def test_what_has_no_lattice_is_refused(made_run: Path) -> None:
    result = start("tavelo-view", made_run)
    assert (result.returncode, result.stdout) == (1, "")
    assert "WritingLatticeSteps.dat" in result.stderr and result.stderr.startswith("tavelo-view: ")
