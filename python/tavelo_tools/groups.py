"""Runs under the same conditions together, named by what they differ in."""

import textwrap
from collections import Counter
from collections.abc import Iterator
from dataclasses import dataclass

import pandas as pd

from .listing import read_parameter_file
from .noticed import SNAPSHOT_TIMES
from .numbers import read_text
from .read import Run

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
    files = sorted({*run.directory.glob("*.prm"), *run.directory.glob("*.dat")})
    outputs = {path for paths in run.files.values() for path in paths}
    inputs = [path for path in files if path not in outputs and path.name != SNAPSHOT_TIMES]
    if not any(path.name == "simulation.prm" for path in inputs):
        return _listed(run)
    found: Settings = {}
    for path in inputs:
        if path.suffix == ".prm":
            found |= _settings(read_parameter_file(path))
        elif path.name in PROTOCOLS:
            found |= _protocol_fields(path.name, read_text(path))
        else:
            found[path.name, "content"] = " ".join(map(_plain, read_text(path).split()))
    return found


def _listed(run: Run) -> Settings:
    return _settings(run["parameters"])


def _settings(frame: pd.DataFrame) -> Settings:
    rows = zip(frame["section"], frame["name"], frame["value"])
    found = {(section, name): _plain(value) for section, name, value in rows}
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


def group(runs: list[Run]) -> tuple[list[Group], list[Run]]:
    """Runs under the same conditions together, in the order of the first of each; and those that
    repeat a seed: counted twice they would narrow the band."""
    by_conditions: dict[frozenset[tuple[tuple[str, str], str]], dict[str, Run]] = {}
    repeated = []
    for run in runs:
        members = by_conditions.setdefault(frozenset(conditions(run).items()), {})
        if seed(run) in members:
            repeated.append(run)
        else:
            members[seed(run)] = run
    members = [tuple(of_seed.values()) for of_seed in by_conditions.values()]
    return [Group(*pair) for pair in zip(labels([m[0] for m in members]), members)], repeated


def differences(runs: list[Run]) -> pd.DataFrame:
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


def labels(runs: list[Run]) -> list[str]:
    """What tells each run from the others, such as "f1 = 8, g1 = 15"; its name where nothing does."""
    if len(runs) < 2:
        return [run.name for run in runs]
    for known in ([conditions(run) for run in runs], [_listed(run) for run in runs]):
        found = [", ".join(parts) for parts in zip(*_parts(_differing(known), len(runs)))]
        if found and len(set(found)) == len(runs):
            return found
    names = [run.name for run in runs]
    return names if len(set(names)) == len(names) else [str(run.directory) for run in runs]


def _parts(table: pd.DataFrame, count: int) -> Iterator[list[str]]:
    """Of the first parameters that all runs have, "name = value" for each run."""
    columns = list(range(count))
    whole = table[(table[columns] != "").all(axis="columns") & (table["name"] != "content")]
    # Slow and fast heads, say, with the same value: once. With several values: by their file.
    whole = whole.drop_duplicates(["name", *columns])
    # Those that tell most runs apart come first.
    whole = whole.sort_values(by="name", key=lambda _: -whole[columns].nunique(axis=1), kind="stable")
    several = {name for name, times in Counter(whole["name"]).items() if times > 1}
    for number, row in enumerate(whole.itertuples(index=False)):
        section, name, *values = row
        if number == LONGEST:
            yield ["..."] * count
            return
        file = section.split(",")[0].removesuffix(".prm").removesuffix(".dat")
        named = f"{file} {name}" if name in several or name.startswith("row ") else name
        yield [f"{named} = {textwrap.shorten(value, 40, placeholder='...')}" for value in values]
