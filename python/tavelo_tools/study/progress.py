"""How far a study is: a bar with the time left on a terminal, elsewhere a line a minute."""

import sys
import time
from types import TracebackType

from rich.console import Console
from rich.progress import BarColumn, MofNCompleteColumn, Progress, TextColumn, TimeRemainingColumn

from .work import Outcome

BETWEEN_LINES = 60.0  # s


class Watcher:
    """Is told of every batch. Used in a `with` statement; this one says nothing."""

    def __init__(self, total: int, there: int) -> None:
        self.total, self.ended, self.failed = total, there, 0

    def __enter__(self) -> "Watcher":
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        pass

    def tell(self, outcomes: list[Outcome]) -> None:
        self.ended += sum(item.status != "stopped" for item in outcomes)
        self.failed += sum(item.status == "failed" for item in outcomes)

    def _failures(self) -> str:
        return f", {self.failed} failed" if self.failed else ""


class Lines(Watcher):
    """A line a minute, with the time left as the runs of this call suggest."""

    def __init__(self, total: int, there: int) -> None:
        super().__init__(total, there)
        self._there = there
        self._began = self._last = time.monotonic()

    def tell(self, outcomes: list[Outcome]) -> None:
        super().tell(outcomes)
        now = time.monotonic()
        if now - self._last < BETWEEN_LINES:
            return
        self._last = now
        rate = (self.ended - self._there) / (now - self._began)
        left = f", about {(self.total - self.ended) / rate / 60:.0f} min left" if rate else ""
        print(f"{self.ended} of {self.total} runs{self._failures()}{left}", file=sys.stderr, flush=True)


class Bar(Watcher):
    """A bar on the terminal of standard error."""

    def __init__(self, total: int, there: int) -> None:
        super().__init__(total, there)
        self._bar = Progress(
            TextColumn("{task.description}"), BarColumn(), MofNCompleteColumn(), TimeRemainingColumn(),
            console=Console(stderr=True), transient=True,
        )  # fmt: skip
        self._task = self._bar.add_task("runs", total=total, completed=there)

    def __enter__(self) -> "Bar":
        self._bar.start()
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        self._bar.stop()

    def tell(self, outcomes: list[Outcome]) -> None:
        super().tell(outcomes)
        self._bar.update(self._task, completed=self.ended, description=f"runs{self._failures()}")


def watcher(total: int, there: int) -> Watcher:
    """What suits standard error."""
    return Bar(total, there) if sys.stderr.isatty() else Lines(total, there)
