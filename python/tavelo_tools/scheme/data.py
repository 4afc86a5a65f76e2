"""A scheme as the program tells it: rates, forces and free energies over the strain."""

import json
import re
import tomllib
from collections.abc import Iterator, Sequence
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

import numpy as np

FORMAT = 1
FILES = "scheme_*.json"  # that a run leaves
_TRANSITION = re.compile(rb"^\s*\[\[transition\]\]", re.MULTILINE)


@dataclass(frozen=True)
class State:
    name: str
    attached: bool
    lever: float
    colour: str
    energy_as_read: str
    energy: np.ndarray | None  # over the strain [pN nm]
    force: np.ndarray | None  # the same [pN], of attached states


@dataclass(frozen=True)
class Rate:
    """One direction of a transition."""

    origin: int
    target: int
    transition: int
    reverse: bool
    as_read: str
    site: tuple[str, ...]
    binding: bool
    fuel: bool
    follows_time: bool
    values: np.ndarray  # over the strain


@dataclass(frozen=True)
class Scheme:
    file: str
    name: str
    source: str
    law: str
    exact: bool
    follows_calcium: bool
    kBT: float
    parameters: list[dict[str, Any]]
    strain: np.ndarray
    states: list[State]
    rates: list[Rate]
    checks: list[str] = field(default_factory=list)

    def name_of(self, rate: Rate) -> str:
        return f"{self.states[rate.origin].name} \u2192 {self.states[rate.target].name}"


def from_json(text: str) -> Scheme:
    """ValueError where the text is none of these, KeyError where it lacks something."""
    told = json.loads(text)
    if told["format"] != FORMAT:
        raise ValueError(f"format {told['format']}; known: {FORMAT}")
    states = [
        State(s["name"], s["attached"], s["lever"], s["colour"], s["energy_as_read"],
              _array(s.get("energy")), _array(s.get("force")))
        for s in told["states"]
    ]  # fmt: skip
    rates = [
        Rate(r["from"], r["to"], r["transition"], r["reverse"], r["as_read"], tuple(r["site"]), r["binding"],
             r["fuel"], r["follows_time"], np.array(r["values"], dtype=float))
        for r in told["rates"]
    ]  # fmt: skip
    return Scheme(told["file"], told["name"], told["source"], told["law"], told["exact"], told["follows_calcium"],
                  told["kBT"], told["parameters"], np.array(told["strain"]), states, rates, told["checks"])  # fmt: skip


def _array(values: Sequence[float | None] | None) -> np.ndarray | None:
    """What isn't finite is told as null."""
    return None if values is None else np.array(values, dtype=float)


def is_scheme(path: Path) -> bool:
    """Whether a file is a scheme; a plan is TOML, too."""
    try:
        return path.suffix == ".toml" and path.is_file() and bool(_TRANSITION.search(path.read_bytes()))
    except OSError:
        return False


def scheme_settings(text: str) -> list[tuple[str, str]]:
    """What a scheme sets, by name: parameters by their own, others such as "transition 2 rate"."""
    try:
        return list(_settings(tomllib.loads(text), ()))
    except ValueError:  # as it stands now it is no TOML
        return [("content", text)]


def _settings(value: Any, place: tuple[str, ...]) -> Iterator[tuple[str, str]]:
    if isinstance(value, dict):
        for key, inner in value.items():
            yield from _settings(inner, (*place, key))
    elif isinstance(value, list) and value and isinstance(value[0], dict):
        for number, inner in enumerate(value, start=1):
            yield from _settings(inner, (*place, str(number)))
    else:
        is_parameter = place[0] == "parameters" and place[2:] in ((), ("value",))
        yield place[1] if is_parameter else " ".join(place), str(value)


def schemes_of(directory: Path, slow_file: str | None) -> tuple[list[Scheme], dict[str, str]]:
    """Those that a run left, that of the slow heads first; and what is wrong with others, by file."""
    found, faults = [], {}
    for path in sorted(path for path in directory.glob(FILES) if path.is_file()):
        try:
            found.append(from_json(path.read_text(encoding="utf-8")))
        except OSError as error:
            faults[path.name] = f"can't be read: {error.strerror}"
        except (ValueError, KeyError, TypeError, IndexError) as error:
            faults[path.name] = f"not understood: {type(error).__name__} {error}"
    return sorted(found, key=lambda scheme: scheme.file != slow_file), faults
