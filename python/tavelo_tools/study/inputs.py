"""The input files of a run: those of the base folder, with what the plan sets and writes."""

import hashlib
import re
from collections.abc import Iterable
from dataclasses import dataclass
from functools import cached_property, lru_cache
from pathlib import Path

from ..scheme.data import is_scheme
from ..tables import TABLES
from .errors import StudyError
from .formulas import Template, Value, shown
from .plan import SEED, Parameter, Plan
from .toml_text import set_number

INPUTS = (".prm", ".dat", ".txt", ".csv")
NAME_LENGTH = 24  # hexadecimal digits of a run's name: a million runs share one in 3e-18 of studies
_SEED = Parameter.read(SEED, "")


@dataclass(frozen=True)
class RunInput:
    """A run to be: what tells it from the others, and its files."""

    number: int
    name: str
    seed: int
    values: dict[str, Value]
    files: dict[str, bytes]


class Inputs:
    """Makes the inputs of the runs of a plan, one by one."""

    def __init__(self, plan: Plan, version: str) -> None:
        self.plan, self._version = plan, version
        self._base = {path.name: path.read_bytes() for path in input_files(plan.base)}
        if not self._base and not plan.writes:
            raise StudyError(f"{plan.base}: holds no input of a run")
        self._digests = {name: _digest(data) for name, data in self._base.items()}
        self._edited = lru_cache(maxsize=4096)(self._edit)

    @cached_property
    def _of_file(self) -> dict[str, list[Parameter]]:
        found: dict[str, list[Parameter]] = {}
        for parameter in (*self.plan.parameters, _SEED):
            found.setdefault(parameter.file, []).append(parameter)
        return found

    def run(self, number: int) -> RunInput:
        """The input of a run of the plan."""
        plan = self.plan
        condition, seed = plan.place(number)
        values = plan.values(condition)
        changed = {file: template.fill(values).encode() for file, template in plan.writes.items()}
        for file, parameters in self._of_file.items():
            texts = tuple(self._value(parameter, values, seed) for parameter in parameters)
            changed[file] = self._edited(file, texts, changed.get(file))
        files = self._base | changed
        return RunInput(number, self._name(files, changed), seed, values, files)

    def _value(self, parameter: Parameter, values: dict[str, Value], seed: int) -> str:
        if parameter == _SEED:
            return str(seed)
        source = self.plan.parameters[parameter]
        return source.fill(values) if isinstance(source, Template) else shown(values[source])

    def _edit(self, file: str, texts: tuple[str, ...], written: bytes | None) -> bytes:
        data = self._base.get(file, b"") if written is None else written
        return set_values(file, data.decode(), zip(self._of_file[file], texts)).encode()

    def _name(self, files: dict[str, bytes], changed: dict[str, bytes]) -> str:
        """Of the run: a hash of its inputs and the program's version."""
        whole = hashlib.sha256(self._version.encode())
        for file in sorted(files):
            digest = _digest(changed[file]) if file in changed else self._digests[file]
            whole.update(f"{file}\0{digest}\n".encode())
        return whole.hexdigest()[:NAME_LENGTH]


def input_files(base: Path) -> list[Path]:
    """Parameter files, schemes, protocols and tables of a folder, without what a run has written there."""
    paths = sorted(path for path in base.iterdir() if path.is_file() and _is_input(path))
    return [path for path in paths if not any(table.matches(path.name) for table in TABLES)]


def _is_input(path: Path) -> bool:
    return path.suffix in INPUTS or is_scheme(path)


def _digest(data: bytes) -> str:
    return hashlib.sha256(data).hexdigest()


def set_values(file: str, text: str, values: Iterable[tuple[Parameter, str]]) -> str:
    """The text of a parameter file, or a TOML file, with other values."""
    if not file.endswith(".toml"):
        return set_parameters(text, values)
    for parameter, value in values:
        text = set_number(text, (*parameter.sections, parameter.key), value, str(parameter))
    return text


def set_parameters(text: str, values: Iterable[tuple[Parameter, str]]) -> str:
    """The text of a parameter file with values replaced where they stand, else added at the end."""
    lines = text.splitlines()
    for parameter, value in values:
        places = [n for n, line in _settings(lines) if line == (parameter.sections, parameter.key)]
        for n in places:
            lines[n] = re.sub(r"=.*", lambda _: f"= {value}", lines[n], count=1)
        if not places:
            lines += _added(parameter, value)
    return "\n".join(lines) + "\n"


def _settings(lines: list[str]) -> Iterable[tuple[int, tuple[tuple[str, ...], str]]]:
    """Number of each line that sets a value, with its sections and key."""
    sections: list[str] = []
    for number, line in enumerate(lines):
        words = line.split("#")[0].split()
        if words[:1] == ["subsection"]:
            sections.append(" ".join(words[1:]))
        elif words == ["end"]:
            del sections[-1:]
        elif words[:1] == ["set"] and "=" in line:
            key = " ".join(" ".join(words[1:]).split("=")[0].split())
            yield number, (tuple(sections), key)


def _added(parameter: Parameter, value: str) -> list[str]:
    lines = [f"set {parameter.key} = {value}"]
    for section in reversed(parameter.sections):
        lines = [f"subsection {section}", *(f"  {line}" for line in lines), "end"]
    return lines
