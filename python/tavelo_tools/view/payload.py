"""The lattice as numbers that a page carries: a description in JSON, and each snapshot as packed bytes.

A snapshot's bytes are compressed and written in base64. Its arrays follow one another, the widest first, so that each
begins where its type may; `LAYOUT` names them in this order, and scene.js reads them so.
"""

import base64
import zlib
from typing import Any

import numpy as np
import pandas as pd

from ..downsample import downsample
from ..read import Run
from .lattice import Lattice, Snapshot, shown_images

STEP = 0.001  # nm, in which sites are written


def describe(lattice: Lattice, run: Run) -> dict[str, Any]:
    """All but the snapshots."""
    return {
        "name": run.name,
        "lattice": lattice.name,
        "model": run.parameter("Model") or "",
        "states": list(run.state_names),
        "notes": lattice.notes,
        "rows": lattice.rows,
        "inSeries": lattice.in_series,
        "units": [vars(unit) for unit in lattice.units],
        "images": [vars(image) for image in lattice.images],
        "shown": shown_images(lattice).astype(int).tolist(),
        "fibres": max(image.fibre for image in lattice.images),
        "crown": lattice.crown.tolist(),
        "number": lattice.number.tolist(),
        "azimuth": lattice.azimuth.round(5).tolist(),
        "kind": _text(np.ascontiguousarray(lattice.kind).tobytes()),
        "siteAzimuth": np.nan_to_num(lattice.site_azimuth).round(5).tolist(),
        "faces": lattice.faces,
        "radiusMyosin": lattice.radius_myosin,
        "radiusActin": lattice.radius_actin,
        "ranges": {
            name: _largest([getattr(s.bonds, name) for s in lattice.snapshots])
            for name in ("strain", "force", "energy")
        },
        "snapshots": [
            {"time": s.time, "bonds": len(s.bonds.head), "step": site_step(s)} for s in lattice.snapshots
        ],
        "trace": _trace(run["result"]),
    }


def _largest(values: list[np.ndarray]) -> float:
    """A round number that hardly any value exceeds."""
    sizes = np.abs(np.concatenate(values))
    if not len(sizes):
        return 1.0
    largest = float(np.quantile(sizes, 0.995))
    power = 10.0 ** np.floor(np.log10(max(largest, 1e-6)))
    return float(next(step * power for step in (1, 1.5, 2, 3, 5, 10) if step * power >= largest))


def site_step(snapshot: Snapshot) -> float:
    """The step in which sites are written [nm]: small, but large enough for 16 bits."""
    _, off = _straight(snapshot)
    return max(STEP, float(np.nanmax(np.abs(off), initial=0.0)) / 32000)


def pack(snapshot: Snapshot) -> str:
    """The bytes of a snapshot as text."""
    bonds = snapshot.bonds
    line, off = _straight(snapshot)
    steps = np.nan_to_num(off / site_step(snapshot)).round().astype(np.int16)
    arrays = (
        (snapshot.ends, np.float32),
        (line, np.float32),
        (snapshot.titin, np.float32),
        (snapshot.head_x, np.float32),
        (bonds.strain, np.float32),
        (bonds.stiffness, np.float32),
        (bonds.force, np.float32),
        (bonds.energy, np.float32),
        (bonds.head, np.uint32),
        (np.diff(steps, axis=2, prepend=np.int16(0)), np.int16),
        (bonds.site, np.uint16),
        (snapshot.head_state, np.uint8),
        (snapshot.site_state, np.uint8),
        ((snapshot.site_factor.clip(0, 1) * 255).round(), np.uint8),
        (bonds.fibre, np.uint8),
        (bonds.image, np.uint8),
        (bonds.face, np.uint8),
    )
    return _text(b"".join(np.ascontiguousarray(array, kind).tobytes() for array, kind in arrays))


def _straight(snapshot: Snapshot) -> tuple[np.ndarray, np.ndarray]:
    """Of each thin filament the first site and the spacing, as if it were straight, and how far each site is off."""
    x = snapshot.site_x
    last = x[:, :, -1]
    first_index = np.argmax(~np.isnan(x), axis=2)
    first = np.take_along_axis(x, first_index[:, :, None], axis=2)[:, :, 0]
    spacing = (last - first) / np.maximum(x.shape[2] - 1 - first_index, 1)
    start = last - spacing * (x.shape[2] - 1)
    line = np.stack([start, spacing], axis=2)
    off = x - (start[:, :, None] + spacing[:, :, None] * np.arange(x.shape[2]))
    return np.nan_to_num(line), off


def _trace(result: pd.DataFrame) -> dict[str, list[float]]:
    """Force over time, with fewer points where there are many."""
    if result.empty or "force" not in result:
        return {"time": [], "force": []}
    time, force = downsample(result["time"].to_numpy(), result["force"].to_numpy())
    return {"time": [float(f"{t:.7g}") for t in time], "force": [float(f"{f:.4g}") for f in force]}


def _text(data: bytes) -> str:
    return base64.b64encode(zlib.compress(data, 9)).decode()
