"""Reads a run: `read_run(directory)` gives a `Run` with a data frame per output file.

    run = read_run("my-run")
    run["result"]                      # time, force, displacement_actin, bound_heads ...
    run.unit("result", "force")        # "pN per thick filament"
    run.keys()                         # tables that this run has; docs/reports.md lists all
    run.problems                       # what was missing, cut off or broken, file by file
    run.record                         # what run.json tells: inputs, exit status ...; None without it
    run.earlier                        # files of an earlier run in the directory, left out

A table is read when it is first asked for and then kept. A missing or broken file is never an
exception: its table is empty, and `problems` says why.
"""

import re
from collections.abc import Callable, Iterable, Iterator, Mapping
from dataclasses import dataclass
from functools import cached_property
from pathlib import Path
from typing import TYPE_CHECKING

import numpy as np
import pandas as pd

from . import listing, tables
from .numbers import read_numbers, read_text
from .record import FILE as RECORD_FILE, Record, read_record
from .scheme.data import Scheme, schemes_of
from .tables import BY_KEY, STATE_NAMES, TABLES, Table

if TYPE_CHECKING:
    import xarray

# Tables whose rows are joined with others by the number of their line.
LINES_COUNT = ("result", "bound_states")


class RunError(Exception):
    """A directory that holds no run, or can't be read at all."""


@dataclass(frozen=True)
class Problem:
    """What is wrong with a file of a run."""

    file: str
    text: str

    def __str__(self) -> str:
        return f"{self.file}: {self.text}"


class Run(Mapping[str, pd.DataFrame]):
    """The outputs of one run as data frames, by the keys of `tables.TABLES`."""

    def __init__(self, directory: Path, files: dict[str, list[Path]]) -> None:
        self.directory = directory
        self.name = directory.resolve().name
        self.problems: list[Problem] = []
        self.record = self._read_record()
        self.files = {key: own for key, paths in files.items() if (own := list(filter(self._wrote, paths)))}
        self.earlier = [path for paths in files.values() for path in paths if not self._wrote(path)]
        self._frames: dict[str, pd.DataFrame] = {}

    def __iter__(self) -> Iterator[str]:
        return iter(self.files)

    def __len__(self) -> int:
        return len(self.files)

    def __getitem__(self, key: str) -> pd.DataFrame:
        if key not in BY_KEY:
            raise KeyError(f"no table {key!r}; those that a run can have: {', '.join(BY_KEY)}")
        if key not in self._frames:
            self._frames[key] = self._read(BY_KEY[key])
        return self._frames[key]

    def __contains__(self, key: object) -> bool:
        return key in self.files

    def __repr__(self) -> str:
        return f"<Run {str(self.directory)!r}: {len(self)} tables, {len(self['result'])} steps>"

    def unit(self, key: str, column: str) -> str:
        """The unit of a column, empty for plain numbers. KeyError for a table that isn't known."""
        if key not in BY_KEY:
            raise KeyError(f"no table {key!r}; those that a run can have: {', '.join(BY_KEY)}")
        return BY_KEY[key].unit(column)

    def parameter(self, name: str) -> str | None:
        """A value by the name that the listing or a parameter file has for it, "Random Seed" or
        "random_seed": the first that is listed, else the first that is set in the files as they stand
        now. None if neither knows it."""
        listed = listing.value_of(self["parameters"], name)
        return listing.value_of(self.input_parameters, name) if listed is None else listed

    def to_xarray(self, tables: Iterable[str] | None = None) -> "xarray.Dataset":
        """The run as a data set of xarray, with units as attributes of the variables.

        Columns of `result` keep their names on the dimension `time`; those of other tables have the
        table's name before theirs (`events_attachments`), numbered ones become one variable with a
        second dimension (`head_states`). Tables with other times have a time of their own
        (`time_bound_states`), those in which times repeat a dimension of their own name. Listings are
        attributes in JSON. `tables` are the keys to take; by default all but `integral`, which is
        large. RunError if xarray is not installed, KeyError for a table that isn't known."""
        from .dataset import to_xarray

        return to_xarray(self, tables)

    @property
    def state_names(self) -> tuple[str, ...]:
        """Names of the kinetic states, by their numbers; empty for a model that isn't known here."""
        if self.schemes:
            return tuple(state.name for state in self.schemes[0].states)
        return STATE_NAMES.get(self.parameter("Model") or "", ())

    @cached_property
    def schemes(self) -> list[Scheme]:
        """The kinetic schemes of a run whose model is one, that of the slow heads first."""
        if self.parameter("Model") != "Scheme":
            return []
        schemes, faults = schemes_of(self.directory, self.parameter("ModelSlow_fileName"))
        for file, text in faults.items():
            self._problem(file, text)
        return schemes

    @property
    def input_parameters(self) -> pd.DataFrame:
        """What the parameter files of the directory set, as they stand there now."""
        paths = sorted(self.directory.glob("*.prm"))
        frames = [listing.settings_of(path.name, self.input_text(path)) for path in paths]
        return pd.concat(frames) if frames else pd.DataFrame(columns=listing.COLUMNS)

    def input_text(self, path: Path) -> str:
        """The text of an input file; empty, and a problem, where it can't be read."""
        try:
            # A pipe would keep the reader waiting.
            return read_text(path) if path.is_file() or path.is_dir() else ""
        except OSError as error:
            problem = Problem(path.name, f"can't be read: {error.strerror}")
            self.problems += [problem] if problem not in self.problems else []
            return ""

    def _read_record(self) -> Record | None:
        try:
            return read_record(self.directory)
        except OSError as error:
            self._problem(RECORD_FILE, f"can't be read: {error.strerror}")
        except ValueError as error:
            self._problem(RECORD_FILE, f"not understood: {error}")
        return None

    def _wrote(self, path: Path) -> bool:
        return self.record is None or self.record.wrote(path)

    def _problem(self, file: str, text: str) -> None:
        self.problems.append(Problem(file, text))

    def _read(self, table: Table) -> pd.DataFrame:
        frames = [self._read_file(table, path) for path in self.files.get(table.key, [])]
        filled = [frame for frame in frames if not frame.empty]
        if not filled:
            frame = _no_rows(table)
        elif table.key == "head_states":
            frame = self._with_times(filled[0])
        elif table.appends:
            frame = self._last_run(table, filled[0])
        else:
            frame = pd.concat(filled) if len(filled) > 1 else filled[0]
        if table.key not in LINES_COUNT:
            frame = frame.reset_index(drop=True)
        if table.key == "bonds":
            frame = self._in_space(frame)
        frame.attrs["units"] = {name: table.unit(str(name)) for name in frame.columns}
        return frame

    def _read_file(self, table: Table, path: Path) -> pd.DataFrame:
        try:
            if path.stat().st_size == 0:
                if not table.may_be_empty:
                    self._problem(path.name, "empty")
                return pd.DataFrame()
            return _READERS[table.kind](self, table, path)
        except OSError as error:
            self._problem(path.name, f"can't be read: {error.strerror}")
        except ValueError as error:
            self._problem(path.name, f"not understood: {error}")
        return pd.DataFrame()

    def _read_numbers(self, table: Table, path: Path) -> pd.DataFrame:
        numbers = read_numbers(path, table.heading, table.separator)
        for fault in numbers.faults:
            self._problem(path.name, fault)
        rows = numbers.rows
        if rows.empty:
            if not table.may_be_empty:
                self._problem(path.name, "holds no rows")
            return rows
        is_numbered = table.is_snapshot and "bond" in table.columns
        added = 1 + is_numbered if table.is_snapshot else 1 if table.key == "head_states" else 0
        rows.columns = pd.Index(table.names(rows.shape[1] + added)[added:])
        if table.key == "rates":
            rows.columns = pd.Index(_named_by_heading(path, rows))
        if table.is_snapshot:
            rows.insert(0, "time", _snapshot_time(table, path))
        if is_numbered:
            rows.insert(1, "bond", rows.index)
        return rows

    def _read_listing(self, table: Table, path: Path) -> pd.DataFrame:
        rows = listing.read_listing(path)
        if rows.empty and not table.may_be_empty:
            self._problem(path.name, "lists no parameters")
        elif table.key == "parameters" and rows["section"].iloc[-1] != "MECHANICAL PROTOCOL":
            text = "ends before the protocol: cut off, or the run stopped while it was set up"
            self._problem(path.name, text)
        return rows

    def _read_times(self, table: Table, path: Path) -> pd.DataFrame:
        return pd.DataFrame({"time": [float(t) for t in re.findall(r"Time = (\S+)\n", read_text(path))]})

    def _read_values(self, table: Table, path: Path) -> pd.DataFrame:
        """Lines "entry: value"."""
        pairs = [line.rpartition(":") for line in read_text(path).splitlines() if ":" in line]
        rows = [(entry.strip(), float(value)) for entry, _, value in pairs]
        return pd.DataFrame(rows, columns=list(table.columns))

    def _read_sites(self, table: Table, path: Path) -> pd.DataFrame:
        """Blocks, one per filament and fibre, of a site's state a line."""
        rows: list[tuple[int, ...]] = []
        block: tuple[int, ...] = ()
        site, announced = 0, 0
        for line in read_text(path).splitlines():
            words = line.split(",")
            if len(words) == 3 and all(word.isdigit() for word in words):
                filament, fibre, count = map(int, words)
                block, site = (filament, fibre), 0
                announced += count
            elif block and len(words) == 1 and words[0].isdigit():
                rows.append((*block, site, int(words[0])))
                site += 1
        if len(rows) != announced or not rows:
            self._problem(path.name, f"holds {len(rows)} of {announced} sites")
        return pd.DataFrame(rows, columns=list(table.columns))

    def _read_tropomyosin(self, table: Table, path: Path) -> pd.DataFrame:
        """Text of the flexible chain, or integers of the rigid segments."""
        data = path.read_bytes()
        if b"\0" not in data and not data.strip():
            return pd.DataFrame()
        if b"\0" in data:
            return self._rigid_chains(path.name, data)
        rows = []
        filament, site = 1, 0
        for line in data.decode(errors="replace").splitlines():
            if not line.strip():
                continue
            chains = [part.split(",") for part in line.split(",,")]
            for number, (angle, deviation, state) in enumerate(chains, start=1):
                rows.append((site, number, float(angle), float(deviation), int(state)))
            site += 1
        frame = pd.DataFrame(rows, columns=["site", "chain", "angle", "angle_sd", "state"])
        # A filament begins where its number of sites has passed; all have the same, the shortest's.
        count = self.filaments
        if count and site % count == 0:
            frame.insert(0, "filament", frame["site"] // (site // count) + 1)
            frame["site"] %= site // count
        else:
            frame.insert(0, "filament", filament)
            self._problem(path.name, "where one filament ends and the next begins is not clear")
        return frame[list(table.columns)]

    def _rigid_chains(self, name: str, data: bytes) -> pd.DataFrame:
        count = self.filaments
        states = np.frombuffer(data[: len(data) // 4 * 4], dtype=np.int32)
        if not count or len(states) % (4 * count) or len(data) % 4:
            raise ValueError(f"{len(data)} bytes aren't four chains for each filament")
        chains = states.reshape(count, 4, -1)
        where = np.indices(chains.shape).reshape(3, -1)
        frame = pd.DataFrame(
            {
                "filament": where[0] + 1,
                "chain": where[1] + 1,
                "site": where[2],
                "state": chains.ravel(),
            }
        )
        # Places past the end of a shorter chain are padded with 0.
        return frame[frame["state"] > 0].reset_index(drop=True)

    @property
    def filaments(self) -> int:
        """Number of thick filaments, those in series counted; 0 if the listing doesn't say."""
        try:
            in_parallel = int(self.parameter("filaments number") or 0)
            series = 2 * int(self.parameter("full_sarcomere") or 0)
        except ValueError:
            return 0
        return in_parallel * (series or 1)

    def _with_times(self, frame: pd.DataFrame) -> pd.DataFrame:
        """Rows of the last run, with the times of the file that is written together with this one.

        A damaged row is left out in either file, so that rows are joined by the number of their line.
        """
        file = "Myosin_head_states.csv"
        times = self["bound_states"].get("time", pd.Series(dtype=float))
        if times.empty:
            self._problem(file, "its rows have no times without cb_states_file.csv")
            frame.insert(0, "time", np.nan)
            return frame
        # A run writes a row at time 0 and one per step; either file may have been cut off.
        lines = max(times.index[-1], self["result"].index[-1] + 1 if len(self["result"]) else 0) + 1
        earlier = frame.index[-1] + 1 - lines
        if earlier > 0:
            self._problem(file, f"{earlier} row(s) of earlier runs in this directory, left out")
            frame = frame.set_index(frame.index - earlier)
        frame = frame[frame.index.isin(times.index)]
        frame.insert(0, "time", times.reindex(frame.index))
        return frame.reset_index(drop=True)

    def _in_space(self, bonds: pd.DataFrame) -> pd.DataFrame:
        """Bonds with their sites and heads, which stand in the same rows of files of their own."""
        key = ["time", "bond"]
        own = bonds.reindex(columns=[*key, *tables.STRAINED])
        sites, heads = (
            self[name].reindex(columns=list(BY_KEY[name].columns)).drop_duplicates(key)
            for name in ("xray", "places")
        )
        sites = sites.rename(columns={"force": "force_of_site"})
        joined = own.merge(sites, "left", key).merge(heads, "left", key)
        if ((joined["force"] - joined["force_of_site"]).abs() > 1e-6).any():
            self._problem("x_ray_data_T.csv", "not of the same snapshots as distributions_T.csv")
        joined["x_head"] = joined["x"] - joined["strain"]
        return joined.reindex(columns=list(BY_KEY["bonds"].columns))

    def _last_run(self, table: Table, frame: pd.DataFrame) -> pd.DataFrame:
        """Without the rows of earlier runs in the directory: time starts anew with each run."""
        restarts = np.flatnonzero(np.diff(frame["time"].to_numpy()) < 0)
        if not len(restarts):
            return frame
        first = int(restarts[-1]) + 1
        file = self.files[table.key][0].name
        self._problem(file, f"{first} row(s) of earlier runs in this directory, left out")
        return frame.iloc[first:].reset_index(drop=True)


_READERS: dict[int, Callable[[Run, Table, Path], pd.DataFrame]] = {
    tables.NUMBERS: Run._read_numbers,
    tables.LISTING: Run._read_listing,
    tables.SITES: Run._read_sites,
    tables.TROPOMYOSIN: Run._read_tropomyosin,
    tables.TIMES: Run._read_times,
    tables.VALUES: Run._read_values,
}


def _no_rows(table: Table) -> pd.DataFrame:
    columns = [name for name in table.columns if not name.endswith("_")]
    return pd.DataFrame(columns=columns, dtype=float)


def _named_by_heading(path: Path, rows: pd.DataFrame) -> list[str]:
    """Names such as k_01 for a transition that the heading has as "0 -> 1"."""
    with open(path, errors="replace") as file:
        pairs = re.findall(r"(\d+) -> (\d+)", file.readline())
    if len(pairs) != rows.shape[1] - 1:
        raise ValueError("its heading doesn't name its columns")
    return ["strain", *(f"k_{i}{j}" for i, j in pairs)]


def _snapshot_time(table: Table, path: Path) -> float:
    match = table.matches(path.name)
    assert match  # the file was found by this pattern
    return float(match[1])


def _time_of_name(table: Table, path: Path) -> float:
    try:
        return _snapshot_time(table, path)
    except ValueError:
        return float("inf")


def read_run(directory: Path | str) -> Run:
    """The run in a directory. RunError if there is none."""
    directory = Path(directory)
    if not directory.exists():
        raise RunError(f"{directory}: no such directory")
    if not directory.is_dir():
        raise RunError(f"{directory}: not a directory; name the one that the run was started in")
    try:
        paths = sorted(path for path in directory.iterdir() if path.is_file())
    except OSError as error:
        raise RunError(f"{directory}: can't be read: {error.strerror}") from error
    files: dict[str, list[Path]] = {}
    for table in TABLES:
        found = [path for path in paths if table.matches(path.name)]
        if table.is_snapshot:
            found.sort(key=lambda path: _time_of_name(table, path))
        if found:
            files[table.key] = found
    if not files:
        has_input = (directory / "simulation.prm").is_file()
        there = "only the input of a run" if has_input else "no file of one"
        raise RunError(f"{directory}: no outputs of a run; it holds {there}")
    return Run(directory, files)
