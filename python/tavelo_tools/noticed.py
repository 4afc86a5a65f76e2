"""What a reader of a run ought to know before trusting its pictures."""

import fcntl
import re
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from .numbers import read_numbers
from .protocol import Row, end_time, read_protocol
from .read import Run
from .tables import NEEDED

SNAPSHOT_TIMES = "WritingDistributionSteps.dat"
TIMES = {
    "result": "result.csv",
    "bound_states": "cb_states_file.csv",
    "events": "Kacenja.csv",
    "segments": "ActinSegmentStates_Statistics.csv",
}
SUM_ABOVE_1 = re.compile(r"Internal Error!!!! (.*), Sum (\S+)")
STEP = re.compile(r"TStep \d+, Time=(\S+)")


@dataclass(frozen=True)
class Notice:
    """One remark; a grave one casts doubt on the results."""

    text: str
    grave: bool = False


def is_going_on(run: Run) -> bool:
    """Whether a process of the program holds the directory: it locks the listing while it runs.

    The question itself holds the lock for some microseconds, in which no run can start here."""
    try:
        with open(run.directory / "TaveloOutput.lst", "rb") as listing:
            fcntl.flock(listing, fcntl.LOCK_SH | fcntl.LOCK_NB)
            fcntl.flock(listing, fcntl.LOCK_UN)
    except BlockingIOError:
        return True
    except OSError:
        pass
    return False


def protocol_rows(run: Run, name: str = "protocol.dat") -> list[Row]:
    """The rows of a protocol of the run's directory; none if it is missing or unreadable."""
    try:
        return read_protocol(run.directory / name)
    except (OSError, ValueError):
        return []


def last_time(run: Run) -> float:
    """Time of the last row; 0 before the first."""
    times = run["result"].get("time")
    return 0.0 if times is None or times.empty else float(times.iloc[-1])


def notices(run: Run) -> list[Notice]:
    """All remarks on a run, the grave ones first."""
    for key in run:
        if key != "integral":  # large, and of no use here
            run[key]
    found = [
        *_end(run),
        *_log(run),
        *_missing(run),
        *_order_of_times(run),
        *_snapshots(run),
        *_emptiness(run),
        *(Notice(str(problem), "earlier run" not in problem.text) for problem in run.problems),
    ]
    return sorted(dict.fromkeys(found), key=lambda notice: not notice.grave)


def _end(run: Run) -> list[Notice]:
    reached = last_time(run)
    end = end_time(protocol_rows(run))
    of = f"time {reached:g}" + (f" of {end:g}" if end is not None else "")
    if is_going_on(run):
        return [Notice(f"The run is still going on; it stands at {of}.", True)]
    if end is not None and reached < end - 1e-6 * max(1.0, abs(end)):
        return [Notice(f"The run did not finish: it ends at {of}.", True)]
    if not protocol_rows(run):
        reason = "is missing"
        try:
            read_protocol(run.directory / "protocol.dat")
            reason = "is empty"
        except FileNotFoundError:
            pass
        except (OSError, ValueError) as error:
            reason = f"can't be used ({error})"
        return [Notice(f"protocol.dat {reason}; so nothing tells whether the run has finished.")]
    if end is None:
        text = f"The protocol's end depends on the run (type 4, or a lost table); it reached {of}."
        return [Notice(text)]
    return []


def logs(run: Run) -> list[Path]:
    """Files that hold the program's standard output, the newest first."""
    candidates = [p for p in run.directory.iterdir() if p.suffix in (".log", ".out", ".txt")]
    found = []
    for path in candidates:
        try:
            with open(path, errors="replace") as file:
                head = file.read(20000)
        except OSError:
            continue
        if STEP.search(head) or "tavelo: " in head:
            found.append(path)
    return sorted(found, key=lambda path: path.stat().st_mtime, reverse=True)


def _log(run: Run) -> list[Notice]:
    """Probabilities above 1 and own messages of the program, from its standard output."""
    paths = logs(run)
    if not paths:
        text = "Standard output was not kept (tavelo > tavelo.log), so nothing tells whether "
        return [Notice(text + "probabilities of a step exceeded 1.")]
    steps, hits = 0, 0
    time, first = "0", ""
    worst, counts = 0.0, dict[str, int]()
    messages = []
    bad_steps = set()
    with open(paths[0], errors="replace") as file:
        for line in file:
            if step := STEP.match(line):
                steps, time = steps + 1, step[1]
            elif above := SUM_ABOVE_1.search(line):
                hits += 1
                first = first or time
                counts[above[1]] = counts.get(above[1], 0) + 1
                worst = max(worst, _number(above[2]))
                bad_steps.add(steps)
            elif line.startswith("tavelo: "):
                messages.append(Notice(f"{paths[0].name}: {line.strip()}", True))
    if not hits:
        return messages[:5]
    kinds = ", ".join(f"{count} x {kind}" for kind, count in counts.items())
    text = (
        f"Probabilities of a step exceeded 1 in {hits} draws ({kinds}), in {len(bad_steps)} of "
        f"{steps} steps, first at time {first}; the largest sum is {worst:.3g}. "
        "The step is too long for these rates."
    )
    return [*messages[:5], Notice(text, True)]


def _number(text: str) -> float:
    try:
        return float(text)
    except ValueError:
        return float("nan")


def _missing(run: Run) -> list[Notice]:
    there = {path.name for paths in run.files.values() for path in paths}
    return [
        Notice(f"{name} is missing: {lost} can't be shown.", True)
        for name, lost in NEEDED.items()
        if name not in there
    ]


def _order_of_times(run: Run) -> list[Notice]:
    found = []
    for key, file in TIMES.items():
        times = run[key].get("time")
        if times is None or len(times) < 2:
            continue
        back = np.flatnonzero(np.diff(times.to_numpy()) < 0)
        if len(back):
            at = times.iloc[int(back[0]) + 1]
            text = f"{file}: time goes back {len(back)} time(s), first to {at:g}."
            found.append(Notice(text, True))
    steps = {key: len(run[key]) for key in ("result", "events") if not run[key].empty}
    if len(set(steps.values())) > 1 and not is_going_on(run):
        counts = ", ".join(f"{TIMES[key]} {count}" for key, count in steps.items())
        found.append(Notice(f"Files of a row per step differ in length: {counts}.", True))
    return found


def _snapshots(run: Run) -> list[Notice]:
    """Snapshots that were asked for and aren't there, and the other way round."""
    path = run.directory / SNAPSHOT_TIMES
    if not path.is_file():
        return []
    try:
        wanted = read_numbers(path, heading=True, separator=" ").rows.to_numpy().ravel()
    except OSError:
        return []
    names = {file.name for file in run.files.get("bonds", [])}
    expected = {f"distributions_{time:g}.csv" for time in wanted}
    past = {f"distributions_{t:g}.csv" for t in wanted if t <= last_time(run) + 1e-9}
    found = []
    if lost := sorted(past - names):
        text = f"{len(lost)} snapshot(s) of {SNAPSHOT_TIMES} were not written, {lost[0]} first: "
        found.append(Notice(text + "no step met that time.", True))
    if old := sorted(names - expected):
        found.append(Notice(f"Not asked for in {SNAPSHOT_TIMES}: {', '.join(old[:5])}."))
    return found


def _emptiness(run: Run) -> list[Notice]:
    """Files without a row that need not have one, in one line."""
    names = [path.name for key in run for path in run.files[key] if key != "integral"]
    filled = {path.name for key in run if not run[key].empty for path in run.files[key]}
    broken = {problem.file for problem in run.problems}
    empty = [name for name in names if name not in filled | broken and name not in NEEDED]
    return [Notice(f"Empty, as far as this run goes: {', '.join(empty)}.")] if empty else []
