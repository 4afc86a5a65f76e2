"""Plans: what is varied, what is measured, what is drawn. A TOML file, checked as a whole."""

import math
import re
import tomllib
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from ..tables import BY_KEY
from . import curves, drawings
from .errors import StudyError
from .formulas import Formula, Template, Value, shown
from .measures import Measure, read_measures
from .toml_text import Table

KEYS = ("title", "base", "seeds", "keep", "store", "courses", "vary", "derive", "set", "write",
        "measure", "fit", "figure", "unit")  # fmt: skip
FIT_KEYS = ("target", "free", "search")
KEEP = ("all", "results", "measures")
RESERVED = {"run", "condition", "seed", "status", "seconds", "message", "mode", "time", "row"}
SEED = "simulation.prm:global/random_seed"
_PATH = re.compile(r"^([^:/]+):(.+)$")


@dataclass(frozen=True)
class Parameter:
    """A key of a parameter file, written "file:section/key"."""

    file: str
    sections: tuple[str, ...]
    key: str

    @classmethod
    def read(cls, text: str, where: str) -> "Parameter":
        found = _PATH.match(text)
        if not found:
            raise StudyError(f'{where}: is no parameter; accepted: "file.prm:section/key"')
        *sections, key = (part.strip() for part in found[2].split("/"))
        return cls(found[1], tuple(sections), key)

    def __str__(self) -> str:
        return f"{self.file}:{'/'.join([*self.sections, self.key])}"


@dataclass(frozen=True)
class Candidates:
    """Values of what a fit leaves free, a set for each candidate, and the seeds with which they are run."""

    values: tuple[dict[str, Value], ...]
    seeds: tuple[int, ...]


@dataclass(frozen=True)
class Plan:
    """A plan as it was read. Runs are numbered: all conditions with the first seed, then the next."""

    path: Path
    title: str
    base: Path
    seeds: tuple[int, ...]
    keep: str
    store: Path | None
    courses: tuple[str, ...]
    vary: dict[str, tuple[Value, ...]]
    zipped: bool
    derive: dict[str, Formula]
    parameters: dict[Parameter, Template | str]  # a text: the name of the varied value
    places: dict[Parameter, str]  # where in the file they stand
    writes: dict[str, Template]
    measures: dict[str, Measure]
    fits: dict[str, "curves.FitPlan"]
    figures: dict[str, "drawings.Figure"]
    units: dict[str, str]
    candidates: tuple[dict[str, Value], ...] = ({},)  # of a fit; a study has one, without values

    @property
    def combinations(self) -> int:
        """How many combinations of varied values there are."""
        lengths = [len(values) for values in self.vary.values()]
        if self.zipped:
            return lengths[0]
        return math.prod(lengths)

    @property
    def conditions(self) -> int:
        """All combinations with the first candidate, then with the next."""
        return self.combinations * len(self.candidates)

    @property
    def runs(self) -> int:
        return self.conditions * len(self.seeds)

    def varied(self, condition: int) -> dict[str, Value]:
        """The varied values of a condition; the last in the plan changes first."""
        condition %= self.combinations
        if self.zipped:
            return {name: values[condition] for name, values in self.vary.items()}
        chosen: dict[str, Value] = {}
        for name, values in reversed(self.vary.items()):
            condition, place = divmod(condition, len(values))
            chosen[name] = values[place]
        return {name: chosen[name] for name in self.vary}

    def values(self, condition: int) -> dict[str, Value]:
        """The varied, the free and the derived values of a condition."""
        names = self.varied(condition) | self.candidates[condition // self.combinations]
        for name, formula in self.derive.items():
            names[name] = formula.value(names)
        return names

    def place(self, number: int) -> tuple[int, int]:
        """Condition and seed of a run."""
        seed, condition = divmod(number, self.conditions)
        return condition, self.seeds[seed]

    def unit(self, name: str) -> str:
        """Of a varied or measured quantity; empty if none is known."""
        if name in self.units:
            return self.units[name]
        return self.measures[name].unit if name in self.measures else ""


def read_plan(path: Path, candidates: Candidates | None = None) -> Plan:
    """The plan in a file. StudyError says what can't be read, with file and line.

    With candidates it is the plan of a fit: their names are known in it."""
    return _Reader(path, read_table(path), candidates).plan()


def read_table(path: Path) -> Table:
    """The whole of a TOML file."""
    try:
        text = path.read_text(encoding="utf-8")
        values = tomllib.loads(text)
    except OSError as error:
        raise StudyError(f"{path}: can't be read: {error.strerror}") from error
    except (tomllib.TOMLDecodeError, UnicodeDecodeError) as error:
        raise StudyError(f"{path}: {error}") from error
    return Table(values, "", path.name, text)


class _Reader:
    def __init__(self, path: Path, top: Table, candidates: Candidates | None) -> None:
        self.path, self.top, self.candidates = path.resolve(), top, candidates
        self.folder = self.path.parent
        self.free = list(candidates.values[0]) if candidates else []
        if not candidates and "free" in top.values:
            raise top.fail("free", "belongs to a fit; run it by tavelo-fit")
        top.allow((*KEYS, *FIT_KEYS) if candidates else KEYS)

    def plan(self) -> Plan:
        top = self.top
        vary_table = top.table("vary")
        vary, zipped = _read_vary(vary_table)
        names = [name for name in vary if ":" not in name]
        names += self._free_names(names)
        derive = self._read_derive(names)
        names += derive
        places: dict[Parameter, str] = {}
        parameters = self._read_parameters(vary, names, places)
        measures = read_measures(top.table("measure"), self.folder, names)
        columns = [*vary, *derive, *measures]
        fits = curves.read_fits(top.table("fit"), columns)
        courses = self._read_courses()
        writes = self._read_writes(names)
        if not zipped:
            self._refuse_idle(vary, [*derive.values(), *parameters.values(), *writes.values(), *measures.values()])
        keep = top.get("keep", str, "all", ", ".join(KEEP))
        if keep not in KEEP:
            raise top.fail("keep", f"is '{keep}'; accepted: {', '.join(KEEP)}")
        store = top.get("store", str, None, "a folder")
        return Plan(
            path=self.path,
            title=top.get("title", str, self.path.stem, "a text"),
            base=self._read_base(),
            seeds=self.candidates.seeds if self.candidates and self.candidates.seeds else self._read_seeds(),
            keep=keep,
            store=None if store is None else self.folder / store,
            courses=courses,
            vary=vary,
            zipped=zipped,
            derive=derive,
            parameters=parameters,
            places=places,
            writes=writes,
            measures=measures,
            fits=fits,
            figures=drawings.read_figures(top.table("figure"), columns),
            units=self._read_units([*columns, *self.free]),
            candidates=self.candidates.values if self.candidates else ({},),
        )

    def _free_names(self, varied: list[str]) -> list[str]:
        names = [name for name in self.free if ":" not in name]
        for name in names:
            _check_name(self.top.table("free"), name, varied)
        return names

    def _read_base(self) -> Path:
        base = self.folder / self.top.get("base", str, ".", "a folder")
        if not base.is_dir():
            raise self.top.fail("base", f"{base} is no folder")
        return base.resolve()

    def _read_seeds(self) -> tuple[int, ...]:
        accepted = "a number of seeds, at least 1, or a list of different seeds from 0 on"
        seeds = self.top.get("seeds", (int, list), 1, accepted)
        listed = list(range(1, seeds + 1)) if isinstance(seeds, int) else seeds
        sound = all(isinstance(s, int) and not isinstance(s, bool) and s >= 0 for s in listed)
        if not listed or not sound or len(set(listed)) < len(listed):
            raise self.top.fail("seeds", f"is {seeds!r}; accepted: {accepted}")
        return tuple(listed)

    def _read_derive(self, varied: list[str]) -> dict[str, Formula]:
        table, formulas = self.top.table("derive"), {}
        for name in table.values:
            _check_name(table, name, [*varied, *formulas])
            text = table.get(name, (str, int, float), "", "a formula or a number")
            formulas[name] = Formula(str(text), table.where(name))
            formulas[name].check([*varied, *list(formulas)[:-1]])
        return formulas

    def _refuse_idle(self, vary: dict[str, Any], users: list[Any]) -> None:
        """A quantity that nothing uses would only repeat runs. With `zip` it may be a label."""
        used = {name for user in users for name in getattr(user, "names", ())}
        for name, table in [*((name, "vary") for name in vary), *((name, "free") for name in self.free)]:
            if ":" not in name and name not in used:
                told = "varied" if table == "vary" else "free"
                raise self.top.table(table).fail(name, f"is {told}, but nothing uses it")

    def _read_parameters(
        self, vary: dict[str, Any], names: list[str], where: dict[Parameter, str]
    ) -> dict[Parameter, Template | str]:
        found: dict[Parameter, Template | str] = {}
        given = [(name, self.top.table("vary")) for name in vary if ":" in name]
        given += [(name, self.top.table("free")) for name in self.free if ":" in name]
        given += [(name, self.top.table("set")) for name in self.top.table("set").values]
        for name, table in given:
            parameter = Parameter.read(name, table.where(name))
            where[parameter] = table.where(name)
            if str(parameter) == SEED:
                raise table.fail(name, "is set by `seeds`")
            if parameter in found:
                raise table.fail(name, "is varied as well")
            if table.name in ("vary", "free"):
                found[parameter] = name
                continue
            value = table.get(name, (str, int, float, bool), "", "a number or a text")
            text = value if isinstance(value, str) else shown(value)
            found[parameter] = Template(text, table.where(name))
            found[parameter].check(names)
        return found

    def _read_writes(self, names: list[str]) -> dict[str, Template]:
        templates = {}
        for file, entry in self.top.table("write").tables().items():
            entry.allow(["text"])
            if "/" in file or file in ("", ".", ".."):
                raise entry.fail("", f"'{file}' is no name of a file")
            templates[file] = Template(entry.get("text", str, "", "a text"), entry.where("text"))
            templates[file].check(names)
        return templates

    def _read_courses(self) -> tuple[str, ...]:
        accepted = "columns of result, or table.column"
        courses = self.top.get("courses", list, ["force", "displacement_actin", "bound_heads"], accepted)
        if not all(isinstance(name, str) and (name.rpartition(".")[0] or "result") in BY_KEY for name in courses):
            raise self.top.fail("courses", f"is {courses}; accepted: {accepted}")
        return tuple(courses)

    def _read_units(self, columns: list[str]) -> dict[str, str]:
        table = self.top.table("unit")
        table.allow(columns)
        return {name: table.get(name, str, "", "a text") for name in table.values}


def _check_name(table: Table, name: str, taken: list[str]) -> None:
    if not name.isidentifier():
        raise table.fail(name, "is no name; accepted: letters, digits, _, or a parameter's path")
    if name in taken or name in RESERVED:
        raise table.fail(name, "has the name of something else")


def _read_vary(table: Table) -> tuple[dict[str, tuple[Value, ...]], bool]:
    mode = table.get("mode", str, "all", "all, zip")
    if mode not in ("all", "zip"):
        raise table.fail("mode", f"is '{mode}'; accepted: all, zip")
    vary: dict[str, tuple[Value, ...]] = {}
    for name, value in table.values.items():
        if name == "mode":
            continue
        if ":" not in name:
            _check_name(table, name, [])
        vary[name] = tuple(_series(table, name) if isinstance(value, dict) else _listed(table, name))
    lengths = {len(values) for values in vary.values()}
    if mode == "zip" and len(lengths) != 1:
        listed = ", ".join(f"{name}: {len(values)}" for name, values in vary.items())
        raise table.fail("mode", f"zip needs lists of one length, not {listed or 'none'}")
    return vary, mode == "zip"


def _listed(table: Table, name: str) -> Iterator[Value]:
    accepted = "a list of different numbers or texts, or { from, to, count }"
    values = table.get(name, list, [], accepted)
    is_plain = all(isinstance(value, (int, float, str)) for value in values)
    repeated = table.values.get("mode") != "zip" and is_plain and len(set(values)) < len(values)
    if not values or not is_plain or repeated:
        raise table.fail(name, f"is {values!r}; accepted: {accepted}")
    if any(isinstance(value, float) and not math.isfinite(value) for value in values):
        raise table.fail(name, "holds a number that isn't finite")
    return iter(values)


def _series(table: Table, name: str) -> Iterator[Value]:
    """Evenly spaced numbers, or with `log` evenly spaced logarithms."""
    entry = table.table(name)
    entry.allow(["from", "to", "count", "log"])
    first, last = (entry.get(key, (int, float), 0.0, "a number") for key in ("from", "to"))
    count = entry.get("count", int, 0, "a number of values, at least 2")
    log = entry.get("log", bool, False, "true, false")
    if count < 2 or first == last or (log and not (first > 0 and last > 0)):
        raise table.fail(name, "needs `from` and `to` that differ, above 0 with log, and a count of 2 or more")
    for place in range(count):
        share = place / (count - 1)
        value = first * (last / first) ** share if log else first + (last - first) * share
        yield float(f"{value:.12g}")
