"""Experiments by name: plans for a folder with input files, to look at, change and run."""

import re
import tempfile
from collections.abc import Callable
from functools import cached_property
from pathlib import Path

from ..listing import settings_of
from ..numbers import read_text
from ..protocol import end_time, read_protocol
from ..read import read_run
from .errors import StudyError
from .inputs import input_files
from .program import run_program

FOLDER = Path(__file__).with_name("experiments")
_CASE = re.compile(r"^@([a-z]+) (.*)$")
_WORD = re.compile(r"@([A-Z0-9]+)@")
# Tables in which a model logs its heads' steps past ADP release.
LOGS = {"Vorn": "atp_6states", "BrekAtpaseFiber": "atp_8states"}


def names() -> list[str]:
    """All experiments."""
    return sorted(path.stem for path in FOLDER.glob("*.toml"))


def plan_text(name: str, base: Path, relative: str, program: Callable[[], Path]) -> str:
    """The plan of an experiment with the input in `base`, which the plan calls `relative`."""
    if name not in names():
        raise StudyError(f"no experiment '{name}'; there are: {', '.join(names())}")
    if not base.is_dir() or not input_files(base):
        raise StudyError(f"{base}: no folder with the input of a run")
    facts = _Facts(base, relative, program)
    lines = [facts.line(text) for text in (FOLDER / f"{name}.toml").read_text().splitlines()]
    return "\n".join(line for line in lines if line is not None) + "\n"


class _Facts:
    """What plans take over from the input of a folder."""

    def __init__(self, base: Path, relative: str, program: Callable[[], Path]) -> None:
        self._base, self._program = base, program
        self.BASE = relative

    def line(self, text: str) -> str | None:
        """A line of a plan with its words filled in; None if the case isn't that of the folder."""
        case = _CASE.match(text)
        if case:
            if not getattr(self, f"is_{case[1]}"):
                return None
            text = case[2]
        return _WORD.sub(lambda word: str(getattr(self, word[1])), text)

    def _parameter(self, key: str, default: str) -> str:
        for path in input_files(self._base):
            if path.suffix == ".prm":
                table = settings_of(path.name, read_text(path))
                found = table.loc[table["name"] == key, "value"]
                if len(found):
                    return str(found.iloc[-1])
        return default

    @property
    def is_regulated(self) -> bool:
        return self._parameter("activation", "None") != "None" or self._parameter("model", "") == "Vorn"

    @property
    def is_free(self) -> bool:
        return not self.is_regulated

    @property
    def is_vertebrate(self) -> bool:
        return self._parameter("geometry", "Vertebrae") == "Vertebrae"

    @property
    def is_other(self) -> bool:
        return not self.is_vertebrate

    @property
    def is_logged(self) -> bool:
        return self._parameter("model", "") in LOGS

    @property
    def is_unlogged(self) -> bool:
        return not self.is_logged

    @property
    def LOG(self) -> str:
        return LOGS[self._parameter("model", "")]

    @property
    def OFFSET(self) -> str:
        return self._parameter("a_offset", "0.0")

    @cached_property
    def _rows(self) -> list[tuple[float, float]]:
        """Start and step of the protocol's rows, the end of the run last."""
        path = self._base / "protocol.dat"
        try:
            rows = read_protocol(path)
        except (OSError, ValueError) as error:
            raise StudyError(f"{path}: {error}; a plan takes the first row's length and step over") from error
        if len(rows) > 1:
            return [(row.start, row.step) for row in rows]
        return [(row.start, row.step) for row in rows] + [(end_time(rows) or 0.3, 0.0)]

    @property
    def STEP(self) -> str:
        return f"{self._rows[0][1]:g}"

    @property
    def TETANUS(self) -> str:
        return f"{self._rows[1][0]:g}"

    @cached_property
    def F0(self) -> str:
        """Isometric force: the last fifth of the tetanus, in one run."""
        with tempfile.TemporaryDirectory(prefix="tavelo-study-") as name:
            folder = Path(name) / "run"
            folder.mkdir()
            for path in input_files(self._base):
                (folder / path.name).write_bytes(path.read_bytes())
            rows = f"0 {self.STEP} 0 0 0\n{self.TETANUS} {self.STEP} 0 0 0\n"
            (folder / "protocol.dat").write_text(rows)
            ended = run_program(self._program(), Path(name), ["run"])
            if ended.status != 0:
                raise StudyError(f"{self._base}: {ended.failed.get('run') or ended.rest.strip()}")
            force = read_run(folder)["result"]["force"]
        return f"{force.iloc[-len(force) // 5 :].mean():.1f}"
