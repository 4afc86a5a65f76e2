"""The lattice as files for ParaView: a PolyData file (XML) a snapshot, and a list of them with their times.

Points are heads, sites, and ends of filaments and bonds; lines are filaments, bonds and titin. What doesn't apply to
a point is -1 where the field counts and NaN where it measures.
"""

from pathlib import Path
from xml.sax.saxutils import escape, quoteattr

import numpy as np
import pandas as pd

from .lattice import ABSENT, Lattice, Snapshot, shown_images

PARTS = ("head", "site", "thick filament", "thin filament", "bond", "titin")  # values of the field `part`
COUNTS = ("part", "filament", "fibre", "number", "kind", "state", "regulation")
MEASURES = ("strain", "force", "energy")


def write_vtk(lattice: Lattice, folder: Path, name: str) -> Path:
    """Writes the files, NAME-0000.vtp on; returns the list, NAME.pvd, which ParaView opens."""
    folder.mkdir(parents=True, exist_ok=True)
    rows = []
    for number, snapshot in enumerate(lattice.snapshots):
        file = folder / f"{name}-{number:04d}.vtp"
        file.write_text(poly_data(lattice, snapshot), encoding="utf-8")
        rows.append(f'<DataSet timestep="{snapshot.time:g}" file={quoteattr(file.name)}/>')
    whole = folder / f"{name}.pvd"
    whole.write_text(_file("Collection", "<Collection>" + "\n".join(rows) + "</Collection>"), encoding="utf-8")
    return whole


class Points:
    """Points with their fields, and the lines through them."""

    def __init__(self) -> None:
        self.frames: list[pd.DataFrame] = []
        self.count = 0
        self.lines: list[np.ndarray] = []

    def add(self, places: np.ndarray, part: str, **fields: object) -> np.ndarray:
        """Appends points; returns their numbers."""
        frame = pd.DataFrame(places, columns=["x", "y", "z"]).assign(part=PARTS.index(part), **fields)
        numbers = np.arange(self.count, self.count + len(frame))
        self.frames.append(frame)
        self.count += len(frame)
        return numbers

    def join(self, numbers: np.ndarray) -> None:
        self.lines.append(numbers)

    def table(self) -> pd.DataFrame:
        whole = pd.concat(self.frames, ignore_index=True).reindex(columns=["x", "y", "z", *COUNTS, *MEASURES])
        return whole.fillna({name: -1 for name in COUNTS})


def poly_data(lattice: Lattice, snapshot: Snapshot) -> str:
    points = Points()
    shown = shown_images(lattice)
    for u, unit in enumerate(lattice.units):
        ends = snapshot.ends[u]
        thick = _across(lattice, u, ends[0], unit.y, unit.z)
        points.join(points.add(thick, "thick filament", filament=unit.filament, fibre=0))
        for image in np.flatnonzero(shown[unit.row]):
            _add_thin(points, lattice, snapshot, u, int(image))
        if not np.isnan(snapshot.titin[u]):
            titin = _across(lattice, u, np.array([ends[0, 1], ends[1, 1]]), unit.y, unit.z)
            points.join(points.add(titin, "titin", filament=unit.filament, force=snapshot.titin[u]))
    _add_heads(points, lattice, snapshot)
    return _written(points)


def _across(lattice: Lattice, u: int, x: np.ndarray, y: float | np.ndarray, z: float | np.ndarray) -> np.ndarray:
    unit = lattice.units[u]
    along = unit.origin + unit.direction * x
    return np.column_stack(np.broadcast_arrays(along, y, z))


def _add_thin(points: Points, lattice: Lattice, snapshot: Snapshot, u: int, image: int) -> None:
    place, unit = lattice.images[image], lattice.units[u]
    y, z, fibre = unit.y + place.y, unit.z + place.z, place.fibre
    ends = _across(lattice, u, snapshot.ends[u, fibre], y, z)
    points.join(points.add(ends, "thin filament", filament=unit.filament, fibre=fibre))
    state = snapshot.site_state[u, fibre - 1]
    sites = np.flatnonzero(state != ABSENT)
    for face in range(lattice.faces):
        azimuth = lattice.site_azimuth[sites] + face * np.pi
        r = lattice.radius_actin
        places = _across(
            lattice, u, snapshot.site_x[u, fibre - 1, sites], y + r * np.cos(azimuth), z + r * np.sin(azimuth)
        )
        fields = {"filament": unit.filament, "fibre": fibre, "number": sites, "regulation": state[sites]}
        points.add(places, "site", **fields)


def head_places(lattice: Lattice, snapshot: Snapshot) -> np.ndarray:
    """Of all heads, unit by unit."""
    y = lattice.radius_myosin * np.cos(lattice.azimuth)
    z = lattice.radius_myosin * np.sin(lattice.azimuth)
    return np.concatenate(
        [
            _across(lattice, u, snapshot.head_x[u], unit.y + y, unit.z + z)
            for u, unit in enumerate(lattice.units)
        ]
    )


def bond_ends(lattice: Lattice, snapshot: Snapshot) -> np.ndarray:
    """Where bonds hold their sites."""
    bonds = snapshot.bonds
    u = bonds.head // len(lattice.crown)
    units = np.array([(unit.origin, unit.direction, unit.y, unit.z) for unit in lattice.units])[u]
    axes = np.array([(image.y, image.z) for image in lattice.images])[bonds.image]
    azimuth = lattice.site_azimuth[bonds.site] + bonds.face * np.pi
    round_axis = lattice.radius_actin * np.column_stack([np.cos(azimuth), np.sin(azimuth)])
    x = units[:, 0] + units[:, 1] * snapshot.site_x[u, bonds.fibre - 1, bonds.site]
    return np.column_stack([x, units[:, 2:] + axes + round_axis])


def _add_heads(points: Points, lattice: Lattice, snapshot: Snapshot) -> None:
    bonds, per = snapshot.bonds, len(lattice.crown)
    filament = np.repeat([unit.filament for unit in lattice.units], per)
    head = np.arange(len(filament))
    fields = pd.DataFrame(
        {
            "filament": filament,
            "number": head % per,
            "kind": lattice.kind.ravel(),
            "state": snapshot.head_state.ravel(),
        }
    )
    measured = pd.DataFrame({name: getattr(bonds, name) for name in MEASURES}, index=bonds.head)
    fields = fields.join(measured[~measured.index.duplicated()])
    of_heads = points.add(head_places(lattice, snapshot), "head", **{str(n): fields[n] for n in fields})
    of_bonds = fields.loc[bonds.head].reset_index(drop=True)
    ends = points.add(bond_ends(lattice, snapshot), "bond", fibre=bonds.fibre, **{str(n): of_bonds[n] for n in of_bonds})
    for pair in zip(of_heads[bonds.head], ends):
        points.join(np.array(pair))


# XML


def _written(points: Points) -> str:
    table = points.table()
    vertices = np.flatnonzero(table["part"] < PARTS.index("thick filament"))
    part = table["part"].to_numpy()
    of_cells = np.concatenate([part[vertices], [max(part[line]) for line in points.lines]])
    data = "".join(_array(name, "Int32", table[name].astype(int)) for name in COUNTS)
    data += "".join(_array(name, "Float32", table[name]) for name in MEASURES)
    places = _array("places", "Float32", table[["x", "y", "z"]].to_numpy().ravel(), ' NumberOfComponents="3"')
    piece = (
        f'<Piece NumberOfPoints="{len(table)}" NumberOfVerts="{len(vertices)}" NumberOfLines="{len(points.lines)}" '
        'NumberOfStrips="0" NumberOfPolys="0">'
        f"<PointData>{data}</PointData>"
        f"<CellData>{_array('part', 'Int32', of_cells)}</CellData>"
        f"<Points>{places}</Points>"
        f"<Verts>{_cells(vertices, np.arange(1, len(vertices) + 1))}</Verts>"
        f"<Lines>{_cells(np.concatenate(points.lines), np.cumsum([len(line) for line in points.lines]))}</Lines>"
        "</Piece>"
    )
    about = "<!-- part: " + escape(", ".join(f"{n} {name}" for n, name in enumerate(PARTS))) + "; lengths in nm, forces in pN -->"
    return _file("PolyData", f"{about}<PolyData>{piece}</PolyData>")


def _cells(connectivity: np.ndarray, offsets: np.ndarray) -> str:
    return _array("connectivity", "Int32", connectivity) + _array("offsets", "Int32", offsets)


def _array(name: str, kind: str, values: np.ndarray | pd.Series, more: str = "") -> str:
    form = "%d" if kind == "Int32" else "%.7g"
    text = " ".join(form % value for value in np.asarray(values).tolist())
    return f'<DataArray type="{kind}" Name="{name}" format="ascii"{more}>{text}</DataArray>\n'


def _file(kind: str, body: str) -> str:
    return f'<?xml version="1.0"?>\n<VTKFile type="{kind}" version="0.1" byte_order="LittleEndian">{body}</VTKFile>\n'
