"""Which runs go to the program together: as many as fill some seconds, fewer towards the end."""

from collections.abc import Callable, Sequence

from .work import Batch

BATCH_SECONDS = 10.0  # so long that the program's start, about 0.3 s, doesn't count
SHORTEST_SECONDS = 2.0  # below which it isn't worth while to share runs out


class Batches:
    """Cuts a series of runs into batches, whose size follows from how long runs take, if that is known already."""

    def __init__(
        self, numbers: Sequence[int], name_of: Callable[[int], str], longest: int = 1000, seconds_per_run: float | None = None
    ) -> None:
        self._numbers, self._name_of, self._longest = numbers, name_of, longest
        self._next = 0
        self.seconds_per_run = seconds_per_run
        self._knew = seconds_per_run is not None

    def learn(self, seconds: list[float]) -> None:
        """Takes account of how long the runs of a batch took."""
        if not seconds:
            return
        mean = sum(seconds) / len(seconds)
        before = self.seconds_per_run
        self.seconds_per_run = mean if before is None else 0.7 * before + 0.3 * mean

    def take(self, workers: int) -> Batch:
        """The next batch; empty at the end. All workers shall end at about the same time."""
        left = len(self._numbers) - self._next
        wanted = 2 if self.seconds_per_run is None else BATCH_SECONDS / max(self.seconds_per_run, 1e-3)
        share = left // (4 * workers)
        if self._knew and self.seconds_per_run is not None:
            share = max(share, min(-(-left // workers), int(SHORTEST_SECONDS / max(self.seconds_per_run, 1e-3))))
        count = min(left, max(1, min(int(wanted), share, self._longest)))
        numbers = self._numbers[self._next : self._next + count]
        self._next += count
        return [(number, self._name_of(number)) for number in numbers]
