"""Where in a TOML text a key stands, which `tomllib` doesn't tell; and tables with known keys."""

import re
import tomllib
from collections.abc import Iterable
from typing import Any

from .errors import StudyError

_HEADING = re.compile(r"^\s*\[\[?(.+?)\]\]?\s*(#.*)?$")


class Table:
    """A table of a plan, which says in which line of the file something is wrong."""

    def __init__(self, values: dict[str, Any], name: str, file: str, text: str) -> None:
        self.values, self.name, self._file, self._text = values, name, file, text

    def where(self, key: str = "") -> str:
        """File, line and name of a key, for messages."""
        line = _line_of(self._text, self.name, key)
        place = f"{self._file}:{line}" if line else self._file
        inside = f"[{self.name}] " if self.name else ""
        return f"{place}: {inside}{key}".rstrip()

    def fail(self, key: str, message: str) -> StudyError:
        return StudyError(f"{self.where(key)}: {message}")

    def allow(self, known: Iterable[str]) -> None:
        """Refuses a key that isn't known."""
        for key in self.values:
            if key not in known:
                raise self.fail(key, f"isn't known; known: {', '.join(known)}")

    def get(self, key: str, kinds: type | tuple[type, ...], default: Any, accepted: str) -> Any:
        """A value of one of the types, or the default."""
        value = self.values.get(key, default)
        is_bool = isinstance(value, bool) and bool not in (kinds if isinstance(kinds, tuple) else (kinds,))
        if key in self.values and (is_bool or not isinstance(value, kinds)):
            raise self.fail(key, f"is {value!r}; accepted: {accepted}")
        return value

    def table(self, key: str) -> "Table":
        """A table in this one, empty if it isn't there."""
        return self.inner(key, self.get(key, dict, {}, "a table"))

    def inner(self, key: str, values: dict[str, Any]) -> "Table":
        """Values as a table of this one."""
        name = f"{self.name}.{key}" if self.name else key
        return Table(values, name, self._file, self._text)

    def tables(self) -> dict[str, "Table"]:
        """All the tables in this one; anything else is refused."""
        for key, value in self.values.items():
            if not isinstance(value, dict):
                raise self.fail(key, f"is {value!r}; accepted: a table {{ ... }}")
        return {key: self.table(key) for key in self.values}


def _plain(name: str) -> str:
    return re.sub(r"[\"'\s]", "", name)


def _line_of(text: str, table: str, key: str) -> int | None:
    """The line of a key in a table, or of the table itself; None if it isn't found."""
    heading, best = "", None
    wanted = _plain(f"{table}.{key}" if table and key else table or key)
    for number, line in enumerate(text.splitlines(), start=1):
        found = _HEADING.match(line)
        if found and "=" not in line:
            heading = _plain(found[1])
            if heading == wanted:
                return number
            continue
        # Keys that stand in a line, within an inline table also several.
        path = heading
        for name in re.findall(r"(?:^|[{,])\s*(\"[^\"]*\"|'[^']*'|[\w.-]+)\s*=", line):
            full = _plain(f"{heading}.{name}" if heading else name)
            inner = _plain(f"{path}.{name}" if path else name)
            if wanted in (full, inner):
                return number
            if wanted.startswith(full + "."):
                path, best = full, number
    return best


def set_number(text: str, path: tuple[str, ...], value: str, where: str) -> str:
    """The text of a TOML file with another number at a path of keys, as a plain number or the `value` of an inline table.

    All else stays as it is, comments too."""
    lines = text.splitlines(keepends=True)
    line = _line_of(text, ".".join(path[:-1]), path[-1])
    try:
        before = _at(tomllib.loads(text), path)
        number = tomllib.loads(f"x = {value}")["x"]
    except (tomllib.TOMLDecodeError, KeyError) as error:
        raise StudyError(f"{where}: {'has no such number' if isinstance(error, KeyError) else error}") from error
    if line is not None:
        key = rf"(?:^|[{{,])\s*[\"']?{re.escape(path[-1])}[\"']?\s*=\s*(?:\{{[^}}]*?\bvalue\s*=\s*)?"
        lines[line - 1] = re.sub(rf"({key})[-+.\w]+", lambda found: found[1] + value, lines[line - 1], count=1)
    changed = "".join(lines)
    if not isinstance(before, (int, float)) or not _is_changed_only_there(text, changed, path, number):
        raise StudyError(f"{where}: holds no number that can be set")
    return changed


def _at(values: dict[str, Any], path: tuple[str, ...]) -> Any:
    found: Any = values
    for key in path:
        found = found[key]
    return found["value"] if isinstance(found, dict) else found


def _is_changed_only_there(text: str, changed: str, path: tuple[str, ...], number: object) -> bool:
    before = tomllib.loads(text)
    holder = before
    for key in path[:-1]:
        holder = holder[key]
    if isinstance(holder[path[-1]], dict):
        holder[path[-1]]["value"] = number
    else:
        holder[path[-1]] = number
    return before == tomllib.loads(changed)
