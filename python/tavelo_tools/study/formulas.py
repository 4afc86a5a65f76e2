"""Formulas in plans, and texts with formulas in braces. Evaluated by asteval, never by eval."""

import ast
import math
import string
import threading
from collections.abc import Iterable, Mapping

from asteval import Interpreter

from .errors import StudyError

Value = float | int | str | bool
Names = Mapping[str, Value]

_FUNCTIONS = {name: value for name, value in vars(math).items() if not name.startswith("_")}
_FUNCTIONS |= {f.__name__: f for f in (abs, float, int, max, min, round, str)}
_LOCK = threading.Lock()  # the one interpreter serves all threads
_INTERPRETER = Interpreter(
    use_numpy=False, no_for=True, no_while=True, no_try=True, no_functiondef=True, no_listcomp=True,
    no_augassign=True, no_assert=True, no_delete=True, no_raise=True, no_print=True,
)  # fmt: skip


class Formula:
    """An expression of numbers and names such as "10**-pCa"; `where` names it in messages."""

    def __init__(self, text: str, where: str) -> None:
        self.text, self.where = text, where
        try:
            self._tree = ast.parse(text.strip(), mode="eval").body
        except (SyntaxError, ValueError) as error:
            raise StudyError(f"{where}: '{text}' is no formula") from error
        found = (node.id for node in ast.walk(self._tree) if isinstance(node, ast.Name))
        self.names = frozenset(found) - _FUNCTIONS.keys()

    def check(self, known: Iterable[str]) -> None:
        """StudyError if a name isn't among those that are known."""
        missing = sorted(self.names - set(known))
        if missing:
            listed = ", ".join(sorted(known)) or "none"
            raise StudyError(f"{self.where}: '{missing[0]}' isn't known here; known: {listed}")

    def value(self, names: Names) -> Value:
        """What it comes to: a finite number, or a text."""
        with _LOCK:
            _INTERPRETER.symtable = {**_FUNCTIONS, **names}
            _INTERPRETER.error, _INTERPRETER.error_msg = [], None
            _INTERPRETER.expr = self.text
            try:
                result = _INTERPRETER.run(self._tree)
            except Exception as error:  # whatever a formula may come upon
                holder = _INTERPRETER.error
                reason = str(holder[0].msg if holder else error) or type(error).__name__
                raise StudyError(f"{self.where}: '{self.text}': {reason}") from error
        if isinstance(result, (str, bool)):
            return result
        if isinstance(result, (int, float)) and math.isfinite(result):
            return result
        raise StudyError(f"{self.where}: '{self.text}' gives {result}; accepted: a finite number")

    def number(self, names: Names) -> float:
        """What it comes to, as a number."""
        result = self.value(names)
        if isinstance(result, str):
            raise StudyError(f"{self.where}: '{self.text}' gives '{result}'; accepted: a number")
        return float(result)


class Template:
    """A text such as "0 0.0001 0 0 {10**-pCa:e}"; formats are those of Python."""

    def __init__(self, text: str, where: str) -> None:
        self.where = where
        self._parts: list[tuple[str, Formula | None, str]] = []
        try:
            parsed = list(string.Formatter().parse(text))
        except ValueError as error:
            raise StudyError(f"{where}: {error}; a brace that is meant is doubled: {{{{") from error
        for literal, field, form, conversion in parsed:
            if conversion:
                raise StudyError(f"{where}: '!{conversion}' isn't accepted; formats are: {{x:.3f}}")
            formula = None if field is None else Formula(field, where)
            self._parts.append((literal, formula, form or ""))
        self.names = frozenset().union(*(formula.names for _, formula, _ in self._parts if formula))

    def check(self, known: Iterable[str]) -> None:
        """StudyError if a name isn't among those that are known."""
        for _, formula, _ in self._parts:
            if formula:
                formula.check(known)

    def fill(self, names: Names) -> str:
        """The text with the values of its formulas."""
        return "".join(literal + self._shown(f, form, names) for literal, f, form in self._parts)

    def _shown(self, formula: Formula | None, form: str, names: Names) -> str:
        if formula is None:
            return ""
        value = formula.value(names)
        try:
            return format(value, form) if form else shown(value)
        except ValueError as error:
            raise StudyError(f"{self.where}: {{{formula.text}:{form}}}: {error}") from error


def shown(value: Value) -> str:
    """A value as parameter files have it."""
    return str(value).lower() if isinstance(value, bool) else str(value)
