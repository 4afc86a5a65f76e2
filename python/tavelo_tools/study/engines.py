"""Engines: who computes the batches of a study. All of Dask's; the work itself is in child processes."""

import logging
import sys
from collections.abc import Callable, Iterator
from dataclasses import astuple
from pathlib import Path
from typing import Any

import dask
from distributed import Client, Future, KilledWorker, LocalCluster, as_completed

from .batches import Batches
from .errors import StudyError
from .program import go_on, stop_all
from .work import Batch, Outcome, Place

# Dask looks after its workers and itself a hundred times a second; here, where threads wait for
# processes, that would be all it does: 3 % of a core.
QUIET = {
    "distributed.worker.profile.enabled": False,
    "distributed.worker.profile.interval": "10s",
    "distributed.worker.profile.cycle": "1000s",
    "distributed.worker.memory.monitor-interval": "10s",
    "distributed.admin.system-monitor.interval": "10s",
    "distributed.admin.tick.interval": "1s",
}
PACKAGES = str(Path(__file__).resolve().parents[2])


# What is sent to workers and back consists of plain tuples, which need no package to be read.
Task = Callable[[tuple[str, ...], Batch], list[tuple[Any, ...]]]


class Engine:
    """Hands batches to the workers of a Dask cluster. Used in a `with` statement."""

    def __init__(self, client: Client, task: Task) -> None:
        self._client, self._task = client, task

    def __enter__(self) -> "Engine":
        go_on()
        return self

    def __exit__(self, *_: object) -> None:
        self._client.close()

    def workers(self) -> int:
        """How many batches can be computed at a time now."""
        return sum(self._client.nthreads().values())

    def run(self, place: Place, batches: Batches) -> Iterator[list[Outcome]]:
        """Outcomes batch by batch, as they come. Two batches per worker are under way."""
        underway = as_completed(loop=self._client.loop)
        sent: dict[str, Batch] = {}

        def send() -> None:
            while len(sent) < 2 * max(1, self.workers()):
                batch = batches.take(max(1, self.workers()))
                if not batch:
                    return
                future = self._client.submit(self._task, astuple(place), batch, pure=False)
                sent[future.key] = batch
                underway.add(future)

        send()
        while sent:
            future = next(underway)
            outcomes = _outcomes(future, sent.pop(future.key))
            batches.learn([item.seconds for item in outcomes if item.status == "done"])
            yield outcomes
            send()


def _outcomes(future: Future, batch: Batch) -> list[Outcome]:
    try:
        return [Outcome(*item) for item in future.result()]
    except KilledWorker:
        message = "every worker that took it was lost"
        return [Outcome(number, name, "stopped", 0.0, message) for number, name in batch]


class LocalEngine(Engine):
    """Threads of this process, each of which waits for a child process."""

    def __init__(self, jobs: int) -> None:
        dask.config.set(QUIET)
        self._cluster = LocalCluster(
            n_workers=1, threads_per_worker=jobs, processes=False, dashboard_address="127.0.0.1:0",
            silence_logs=logging.CRITICAL,
        )  # fmt: skip
        super().__init__(Client(self._cluster, set_as_default=False), _task(PACKAGES))

    def __exit__(self, kind: object, *_: object) -> None:
        if kind:
            stop_all()
        self._client.close()
        self._cluster.close()


class RemoteEngine(Engine):
    """The workers of any Dask scheduler that see the same folders under the same names."""

    def __init__(self, address: str) -> None:
        try:
            client = Client(address, set_as_default=False, timeout=10)
        except (OSError, TimeoutError, ValueError) as error:
            raise StudyError(f"--scheduler {address}: {error or 'no answer'}") from error
        super().__init__(client, _task(PACKAGES))
        if not self.workers():
            client.close()
            raise StudyError(f"--scheduler {address}: it has no workers")


def _task(packages: str) -> Task:
    """A task that finds this package by itself: nested functions are sent whole, not by name."""

    def task(place: tuple[str, ...], batch: Batch) -> list[tuple[Any, ...]]:
        if packages not in sys.path:
            sys.path.insert(0, packages)
        from tavelo_tools.study.work import Place, carry_out

        return [astuple(outcome) for outcome in carry_out(Place(*place), batch)]

    return task
