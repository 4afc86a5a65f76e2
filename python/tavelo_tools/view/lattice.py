"""The lattice of a run at its snapshots, as a scene needs it: who stands where, and what is known of each.

Coordinates in nm: x along the filaments, through all half-sarcomeres of a series; y and z across them, the first
thick filament's axis being the origin.
"""

from dataclasses import dataclass, field

import numpy as np
import pandas as pd

from ..noticed import LATTICE_TIMES
from ..read import Run, RunError

PARTS = ("filaments", "heads", "bonds", "sites")
# Drawn where a lattice has no distances: those of the vertebrates [nm].
RADIUS_MYOSIN, RADIUS_ACTIN, DISTANCE = 7.0, 3.5, 30.0
ABSENT = 255  # as the state of a site that isn't there
SWITCHED_OFF = 3  # an open site that no head can bind


@dataclass(frozen=True)
class Unit:
    """A thick filament with its thin ones: a half-sarcomere of a row."""

    filament: int
    row: int
    place: int
    direction: int
    origin: float  # a node stands at origin + direction * x
    y: float
    z: float


@dataclass(frozen=True)
class Image:
    """A place at which a thin filament appears round its thick one."""

    fibre: int
    bearing: float
    y: float
    z: float


@dataclass(frozen=True)
class Bonds:
    """Every bond of a snapshot, in columns of the same length."""

    head: np.ndarray  # over all units
    fibre: np.ndarray
    site: np.ndarray
    image: np.ndarray
    face: np.ndarray
    strain: np.ndarray  # with the lever
    stiffness: np.ndarray
    force: np.ndarray
    energy: np.ndarray


@dataclass(frozen=True)
class Snapshot:
    """The lattice at one time. Unit by unit in the first dimension; x in the frame of the unit's half-sarcomere."""

    time: float
    ends: np.ndarray  # unit, fibre, first and last
    titin: np.ndarray  # force of each unit; NaN without titin
    head_x: np.ndarray  # unit, head
    head_state: np.ndarray
    site_x: np.ndarray  # unit, thin filament, site; NaN where there is none
    site_state: np.ndarray  # 0 open, 1 blocked, 2 closed, SWITCHED_OFF, ABSENT
    site_factor: np.ndarray  # of the rate of binding
    bonds: Bonds


@dataclass
class Lattice:
    """What doesn't change from snapshot to snapshot, and the snapshots."""

    name: str
    units: list[Unit]
    images: list[Image]
    crown: np.ndarray  # by head of a unit
    number: np.ndarray
    azimuth: np.ndarray
    kind: np.ndarray  # by unit and head
    site_azimuth: np.ndarray  # by site
    faces: int
    radius_myosin: float
    radius_actin: float
    snapshots: list[Snapshot]
    notes: list[str] = field(default_factory=list)

    @property
    def rows(self) -> int:
        return self.units[-1].row + 1

    @property
    def in_series(self) -> int:
        return max(unit.place for unit in self.units) + 1


def read_lattice(run: Run, most_heads: int) -> Lattice:
    """The lattice of a run, of its rows of filaments as many as have no more than `most_heads` heads. RunError if
    the run has no snapshots of it."""
    frames = {part: run[f"lattice_{part}"] for part in PARTS}
    lost = [part for part in PARTS if part != "bonds" and frames[part].empty]
    if lost:
        raise RunError(
            f"{run.directory}: no snapshots of the whole lattice: name their times in {LATTICE_TIMES}, a heading line and "
            f"then numbers, beside the run's input, and run it again"
            if len(lost) == len(PARTS) - 1
            else f"{run.directory}: lattice_{lost[0]}_T.csv has no rows"
        )
    notes: list[str] = []
    frames = _complete(frames, notes)
    frames = _of_few_rows(frames, most_heads, notes)
    return _assemble(run, frames, notes)


def _complete(frames: dict[str, pd.DataFrame], notes: list[str]) -> dict[str, pd.DataFrame]:
    """The snapshots that are there with all their heads and sites."""
    counts = pd.DataFrame({part: frames[part].groupby("time").size() for part in PARTS if part != "bonds"})
    whole = counts[(counts == counts.max()).all(axis=1)].index
    if len(whole) < len(counts):
        notes.append(f"{len(counts) - len(whole)} of {len(counts)} snapshots are damaged and left out.")
    return {part: frame[frame["time"].isin(whole)] for part, frame in frames.items()}


def _of_few_rows(frames: dict[str, pd.DataFrame], most: int, notes: list[str]) -> dict[str, pd.DataFrame]:
    """Rows of filaments, evenly chosen, with no more heads than that; at least one row."""
    in_series = int(frames["filaments"]["place"].max()) + 1
    heads = frames["heads"]
    first = heads[heads["time"] == heads["time"].iloc[0]]
    rows = int(first["filament"].max()) // in_series + 1
    shown = min(rows, max(1, most * rows // len(first)))
    if shown == rows:
        return frames
    notes.append(
        f"{shown} of {rows} rows of filaments are shown, evenly chosen: more would be slow to turn. "
        "tavelo-view --heads shows more."
    )
    chosen = np.linspace(0, rows - 1, shown).round().astype(int)
    return {
        part: frame[(frame["filament"] // in_series).isin(chosen)] for part, frame in frames.items()
    }


def _assemble(run: Run, frames: dict[str, pd.DataFrame], notes: list[str]) -> Lattice:
    times = sorted(frames["heads"]["time"].unique())
    parts = {part: dict(tuple(frame.groupby("time"))) for part, frame in frames.items()}
    first = {part: parts[part].get(times[0], frames[part].iloc[:0]) for part in PARTS}
    filaments = first["filaments"]
    numbers = np.sort(filaments["filament"].unique())
    heads = first["heads"].sort_values(["filament", "head"])
    has_distances = "distance" in filaments
    images = _images(filaments, notes)
    of_one = heads[heads["filament"] == numbers[0]]
    lattice = Lattice(
        name=run.parameter("geometry") or "",
        units=_units(filaments, images, numbers),
        images=images,
        crown=of_one["crown"].to_numpy(int),
        number=of_one["head_in_crown"].to_numpy(int),
        azimuth=_head_azimuths(of_one),
        kind=heads["kind"].to_numpy(np.uint8).reshape(len(numbers), -1),
        site_azimuth=_site_azimuths(first["sites"]),
        faces=max(1, int(filaments["faces"].max())),
        radius_myosin=float(filaments["radius"].iloc[0]) if has_distances else RADIUS_MYOSIN,
        radius_actin=float(filaments["radius"].iloc[-1]) if has_distances else RADIUS_ACTIN,
        snapshots=[],
        notes=notes,
    )
    none = frames["bonds"].iloc[:0]
    for time in times:
        of_time = {part: parts[part].get(time, none) for part in PARTS}
        lattice.snapshots.append(_snapshot(float(time), of_time, lattice, numbers))
    return lattice


# End-on


def _images(filaments: pd.DataFrame, notes: list[str]) -> list[Image]:
    """Places of the thin filaments of a unit: of each fibre first the one that its own cell of the lattice has."""
    one = filaments[(filaments["filament"] == filaments["filament"].iloc[0]) & (filaments["fibre"] > 0)]
    if "bearing" not in one:
        notes.append(
            "This lattice has no angles and no distances: each head is drawn turned to the thin filament, at the "
            "distances of the vertebrate lattice."
        )
        return [Image(1, np.pi / 2, 0.0, DISTANCE)]
    if "distance" not in one:
        notes.append("This lattice has no distances: those of the vertebrate lattice are drawn.")
    distances = one["distance"] if "distance" in one else pd.Series(DISTANCE, one.index)
    return [
        Image(int(fibre), bearing, d * np.cos(bearing), d * np.sin(bearing))
        for fibre, bearing, d in zip(one["fibre"], one["bearing"], distances)
    ]


def _lattice_vectors(images: list[Image]) -> tuple[np.ndarray, np.ndarray]:
    """From a thick filament to two neighbours: as far as from one image of a thin filament to the next, which is
    the neighbour's own."""
    steps = [
        np.array([a.y - b.y, a.z - b.z])
        for a in images
        for b in images
        if a.fibre == b.fibre and a is not b
    ]
    if not steps:
        d = np.sqrt(3.0) * DISTANCE
        return np.array([d, 0.0]), np.array([d / 2, d * np.sin(np.pi / 3)])
    first = steps[0]
    crossing = [abs(first[0] * step[1] - first[1] * step[0]) for step in steps]
    return first, steps[int(np.argmax(crossing))]


def _cells(rows: int, images: list[Image]) -> np.ndarray:
    """Axes of that many thick filaments: a bundle as round as can be, from its middle outward."""
    a, b = _lattice_vectors(images)
    reach = int(np.sqrt(rows)) + 2
    grid = [i * a + j * b for i in range(-reach, reach + 1) for j in range(-reach, reach + 1)]
    grid.sort(key=lambda p: (round(float(np.hypot(*p)), 3), round(float(np.arctan2(p[1], p[0])), 6)))
    return np.array(grid[:rows])


def _units(filaments: pd.DataFrame, images: list[Image], numbers: np.ndarray) -> list[Unit]:
    thick = filaments[filaments["fibre"] == 0].set_index("filament")
    in_series = int(thick["place"].max()) + 1
    cells = _cells(len(numbers) // in_series, images)
    return [
        Unit(
            int(number),
            i // in_series,
            int(thick.at[number, "place"]),
            int(thick.at[number, "direction"]),
            float(thick.at[number, "origin"]),
            *map(float, cells[i // in_series]),
        )
        for i, number in enumerate(numbers)
    ]


def shown_images(lattice: Lattice) -> np.ndarray:
    """By row and image, whether it is drawn when all rows are: one thin filament at each place, the cell's own before
    a neighbour's image."""
    fibres = [image.fibre for image in lattice.images]
    own = {fibre: fibres.index(fibre) for fibre in fibres}
    offsets = np.array([(image.y, image.z) for image in lattice.images])
    cells = np.array([(unit.y, unit.z) for unit in lattice.units if unit.place == 0])
    # A place belongs to the cell whose own image of the fibre stands there: whole numbers of lattice vectors away.
    to_steps = np.linalg.inv(np.column_stack(_lattice_vectors(lattice.images)))
    shown = np.zeros((len(cells), len(fibres)), bool)
    taken = set()
    for is_own in (True, False):
        for row, cell in enumerate(cells):
            for k in (k for k, fibre in enumerate(fibres) if (own[fibre] == k) == is_own):
                steps = np.rint(to_steps @ (cell + offsets[k] - offsets[own[fibres[k]]]))
                place = (fibres[k], *map(int, steps))
                shown[row, k] = place not in taken
                taken.add(place)
    return shown


def _head_azimuths(heads: pd.DataFrame) -> np.ndarray:
    if "azimuth" in heads:
        return heads["azimuth"].to_numpy()
    # Beside each other, so that they can be told apart.
    in_crown = heads.groupby("crown").cumcount().to_numpy()
    return np.pi / 2 + (in_crown - in_crown.max() / 2) * 0.6


def _site_azimuths(sites: pd.DataFrame) -> np.ndarray:
    by_site = sites.drop_duplicates("site").set_index("site").sort_index()
    full = range(int(by_site.index.max()) + 1)
    if "azimuth" in by_site:
        return by_site["azimuth"].reindex(full).to_numpy()
    return -np.pi / 2 + np.where(np.arange(len(full)) % 2 == 0, -0.5, 0.5)


# Snapshots


def _snapshot(time: float, parts: dict[str, pd.DataFrame], lattice: Lattice, numbers: np.ndarray) -> Snapshot:
    heads = parts["heads"].sort_values(["filament", "head"])
    shape = (len(numbers), -1)
    fibres = max(image.fibre for image in lattice.images)
    sites = parts["sites"]
    unit = np.searchsorted(numbers, sites["filament"].to_numpy(int))
    at = (unit, sites["fibre"].to_numpy(int) - 1, sites["site"].to_numpy(int))
    whole = (len(numbers), fibres, len(lattice.site_azimuth))
    site_x, site_state, factor = np.full(whole, np.nan), np.full(whole, ABSENT, np.uint8), np.zeros(whole)
    site_x[at] = sites["x"].to_numpy()
    factor[at] = sites["binding_factor"].to_numpy()
    state = sites["state"].to_numpy(int)
    is_off = (state == 0) & (sites["binding_factor"].to_numpy() <= 0)
    site_state[at] = np.where(is_off, SWITCHED_OFF, state)
    ends, titin = _ends(parts["filaments"], fibres, numbers)
    return Snapshot(
        time,
        ends,
        titin,
        heads["x"].to_numpy().reshape(shape),
        heads["state"].to_numpy(np.uint8).reshape(shape),
        site_x,
        site_state,
        factor,
        _bonds(parts["bonds"], lattice, numbers),
    )


def _ends(filaments: pd.DataFrame, fibres: int, numbers: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    once = filaments.drop_duplicates(["filament", "fibre"]).sort_values(["filament", "fibre"])
    ends = once[["first", "last"]].to_numpy().reshape(len(numbers), fibres + 1, 2)
    if "titin_force" not in once:
        return ends, np.full(len(numbers), np.nan)
    return ends, once[once["fibre"] == 0]["titin_force"].to_numpy()


def _bonds(bonds: pd.DataFrame, lattice: Lattice, numbers: np.ndarray) -> Bonds:
    unit = np.searchsorted(numbers, bonds["filament"].to_numpy(int))
    fibre, site = bonds["fibre"].to_numpy(int), bonds["site"].to_numpy(int)
    image, face = np.zeros(len(bonds), int), np.zeros(len(bonds), int)
    if "bearing" in bonds and len(bonds):
        bearings = np.array([i.bearing for i in lattice.images])
        is_other = np.array([i.fibre for i in lattice.images]) != fibre[:, None]
        apart = np.abs(np.angle(np.exp(1j * (bonds["bearing"].to_numpy()[:, None] - bearings))))
        image = np.argmin(apart + 10.0 * is_other, axis=1)
        turn = np.angle(np.exp(1j * (bonds["azimuth"].to_numpy() - lattice.site_azimuth[site])))
        face = (np.abs(turn) > np.pi / 2).astype(int)
    return Bonds(
        unit * len(lattice.crown) + bonds["head"].to_numpy(int),
        fibre,
        site,
        image,
        face,
        *(bonds[name].to_numpy(float) for name in ("strain_with_lever", "stiffness", "force", "energy")),
    )
