"""Runs under the same conditions together, named by what they differ in."""

import textwrap
from collections import Counter
from collections.abc import Sequence
from dataclasses import dataclass

import numpy as np
import pandas as pd

from .listing import settings_of
from .noticed import LATTICE_TIMES, SNAPSHOT_TIMES
from .read import Run
from .scheme.data import is_scheme, scheme_settings

SEED = "random_seed"
PROTOCOLS = ("protocol.dat", "ca_protocol.dat")
FIELDS = ("start", "step", "mode", "type", "p0", "p1", "p2", "p3")
LONGEST = 3  # parameters in a label

Settings = dict[tuple[str, str], str]  # value by file (or section of the listing) and name


@dataclass(frozen=True)
class Group:
    """Runs that are drawn as one: a single one, or some that differ only by their seed."""

    label: str
    runs: tuple[Run, ...]

    @property
    def counted(self) -> str:
        """The label, with the number of runs where there are several."""
        return f"{self.label} (n = {len(self.runs)})" if len(self.runs) > 1 else self.label


def seed(run: Run) -> str:
    """The seed; the directory where none is known, as such runs aren't the same."""
    return run.parameter("Random Seed") or str(run.directory)


def conditions(run: Run) -> Settings:
    """All that a run depends on but its seed: its input files, or the listing where they are lost."""
    schemes = filter(is_scheme, run.directory.glob("*.toml"))
    files = sorted({*run.directory.glob("*.prm"), *run.directory.glob("*.dat"), *schemes})
    outputs = {path for paths in run.files.values() for path in paths}
    inputs = [path for path in files if path not in outputs and path.name not in (SNAPSHOT_TIMES, LATTICE_TIMES)]
    if not any(path.name == "simulation.prm" for path in inputs):
        return _listed(run)
    found: Settings = {}
    for path in inputs:
        text = run.input_text(path)
        if path.suffix == ".prm":
            found |= _settings(settings_of(path.name, text))
        elif path.suffix == ".toml":
            found |= {(path.name, name): _plain(value) for name, value in scheme_settings(text)}
        elif path.name in PROTOCOLS:
            found |= _protocol_fields(path.name, text)
        else:
            found[path.name, "content"] = " ".join(map(_plain, text.split()))
    return found


def _listed(run: Run) -> Settings:
    # Runs of which nothing is known aren't the same.
    return _settings(run["parameters"]) or {("neither inputs nor listing", "content"): str(run.directory)}


def _settings(frame: pd.DataFrame) -> Settings:
    rows = zip(frame["section"], frame["name"], frame["value"])
    found = {(section, name): _plain(value) or "(empty)" for section, name, value in rows}
    return {key: value for key, value in found.items() if key[1] not in (SEED, "Random Seed")}


def _protocol_fields(file: str, text: str) -> Settings:
    rows = [line.split() for line in text.splitlines() if line.strip()]
    return {
        (file, f"row {number} {field}"): _plain(word)
        for number, words in enumerate(rows, start=1)
        for field, word in zip(FIELDS, words)
    }


def _plain(value: str) -> str:
    """A number without what only its form adds: 8.0 and 8 are the same."""
    try:
        return f"{float(value):.12g}"
    except ValueError:
        return value


def condition_labels(runs: Sequence[Run]) -> list[str]:
    """For each run what its conditions set differently from the others', its seed apart."""
    keys = [frozenset(conditions(run).items()) for run in runs]
    firsts = {key: run for key, run in reversed(list(zip(keys, runs)))}
    ordered = [firsts[key] for key in dict.fromkeys(keys)]
    names = dict(zip(dict.fromkeys(keys), _labels(ordered)))
    return [names[key] for key in keys]


def group(runs: Sequence[Run]) -> tuple[list[Group], list[Run]]:
    """Runs under the same conditions together, in the order of the first of each; and those that
    repeat a seed: counted twice they would narrow the band."""
    members: dict[str, dict[str, Run]] = {}
    repeated = []
    for label, run in zip(condition_labels(runs), runs):
        if members.setdefault(label, {}).setdefault(seed(run), run) is not run:
            repeated.append(run)
    return [Group(label, tuple(found.values())) for label, found in members.items()], repeated


def differences(runs: Sequence[Run]) -> pd.DataFrame:
    """Listed and set parameters in which runs differ: section, name, and a column for each run,
    numbered from 0. What a run does not have is empty."""
    return _differing([_without_rows(_listed(run)) | conditions(run) for run in runs])


def _without_rows(listed: Settings) -> Settings:
    """Without the protocols, which conditions hold field by field."""
    return {key: value for key, value in listed.items() if not key[0].endswith("PROTOCOL")}


def _differing(settings: list[Settings]) -> pd.DataFrame:
    keys = dict.fromkeys(key for found in settings for key in found)
    rows = [[*key, *(found.get(key, "") for found in settings)] for key in keys]
    table = pd.DataFrame(rows, columns=["section", "name", *range(len(settings))])
    return table[table[list(range(len(settings)))].nunique(axis="columns") > 1]


def varied(runs: Sequence[Run], by_all: bool = True) -> dict[str, list[str]]:
    """Parameters in which runs differ, such as "f1", with the value of each run; those that tell most
    runs apart first, names of files last. Of the files, or of the listing where these agree.
    `by_all`: only those that every run has; otherwise a run without one has an empty value."""
    for settings in ([conditions(run) for run in runs], [_listed(run) for run in runs]):
        table = _differing(settings)
        columns = list(range(len(runs)))
        table = table[table["name"] != "content"]
        known = table[columns].replace("", np.nan)
        table = table[known.notna().all(axis=1) if by_all else known.nunique(axis=1) > 1]
        # Slow and fast heads, say, with the same value: once. With several values: by their file.
        table = table.drop_duplicates(["name", *columns])
        rank = -table[columns].nunique(axis="columns")
        rank[table["name"].str.endswith("fileName")] = 0  # says less than what is in the file
        order = rank.sort_values(kind="stable").index
        if len(order):
            several = {name for name, times in Counter(table["name"]).items() if times > 1}
            return {
                _named(section, name, several): values
                for section, name, *values in table.loc[order].itertuples(index=False)
            }
    return {}


def _named(section: str, name: str, several: set[str]) -> str:
    file = section.split(",")[0].removesuffix(".prm").removesuffix(".dat")
    return f"{file} {name}" if name in several or name.startswith("row ") else name


def _labels(runs: list[Run]) -> list[str]:
    """What tells each run from the others, such as "f1 = 8, g1 = 15"; its name where nothing does."""
    names = [run.name for run in runs]
    if len(runs) < 2:
        return names
    for by_all in (True, False):
        found = list(varied(runs, by_all).items())
        labels = [_label([(name, values[i]) for name, values in found]) for i in range(len(runs))]
        if len(set(labels)) == len(labels):
            return labels
    return names if len(set(names)) == len(names) else [str(run.directory) for run in runs]


def _label(settings: list[tuple[str, str]]) -> str:
    parts = [
        f"{name} = {textwrap.shorten(value, 40, placeholder='...')}" for name, value in settings if value
    ]
    return ", ".join(parts[:LONGEST] + ["..."] * (len(parts) > LONGEST))
