"""run.json, the record that a run leaves of itself; docs/outputs.md says what it holds."""

import hashlib
import json
from dataclasses import dataclass
from datetime import datetime
from pathlib import Path

FILE = "run.json"
# A file system's clock lags behind the one that the record's times are from.
CLOCKS_DIFFER = 1.0  # s


@dataclass(frozen=True)
class Record:
    """The keys of run.json by their names; times of day are in UTC."""

    version: dict[str, str]
    command: list[str]
    seed: int | None
    started: datetime
    ended: datetime | None  # None until the run has ended, and for good if it was killed
    exit_status: int | None  # the same
    time: float
    steps: int
    passes: int
    probabilities_above_1: dict
    inputs: dict[str, str]
    defaults: list[str]
    outputs: list[str]
    messages: list[str]

    def wrote(self, path: Path) -> bool:
        """Whether a file of the directory is this run's. Of a run that was killed the record doesn't
        know all files: those that are younger than its start are taken for its own."""
        if path.name in self.outputs:
            return True
        is_younger = path.stat().st_mtime > self.started.timestamp() - CLOCKS_DIFFER
        return self.exit_status is None and is_younger

    def changed_inputs(self, directory: Path) -> list[str]:
        """Inputs that are there, but no longer as the run read them."""
        return [name for name, digest in self.inputs.items() if _digest(directory / name) not in ("", digest)]


def _digest(path: Path) -> str:
    try:
        return hashlib.sha256(path.read_bytes()).hexdigest()
    except OSError:
        return ""


def read_record(directory: Path) -> Record | None:
    """The record in a directory; None if there is none. ValueError if it isn't one, or is damaged."""
    try:
        text = (directory / FILE).read_bytes()
    except FileNotFoundError:
        return None
    facts = json.loads(text)  # its error is a ValueError
    try:
        ended = facts["ended"] and datetime.fromisoformat(facts["ended"])
        above = facts["probabilities_above_1"]
        return Record(
            version={str(name): str(value) for name, value in facts["version"].items()},
            command=list(map(str, facts["command"])),
            seed=facts["seed"],
            started=datetime.fromisoformat(facts["started"]),
            ended=ended,
            exit_status=facts["exit_status"],
            time=float(facts["time"]),
            steps=int(facts["steps"]),
            passes=int(facts["passes"]),
            probabilities_above_1={key: above[key] for key in ("draws", "steps", "first_time", "largest_sum")},
            inputs={str(name): str(value) for name, value in facts["inputs"].items()},
            defaults=list(map(str, facts["defaults"])),
            outputs=list(map(str, facts["outputs"])),
            messages=list(map(str, facts["messages"])),
        )
    except (KeyError, TypeError, AttributeError) as error:
        raise ValueError(f"it lacks a sound {error}") from error
