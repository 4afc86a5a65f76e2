"""What a reader of a run ought to know before trusting its pictures."""

import fcntl
import re
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from .numbers import read_numbers
from .protocol import Row, end_time, read_protocol
from .read import Run
from .record import Record
from .tables import NEEDED

SNAPSHOT_TIMES = "WritingDistributionSteps.dat"
LATTICE_TIMES = "WritingLatticeSteps.dat"
TIMES = {
    "result": "result.csv",
    "bound_states": "cb_states_file.csv",
    "events": "Kacenja.csv",
    "segments": "ActinSegmentStates_Statistics.csv",
}
SUM_ABOVE_1 = re.compile(r"Internal Error!!!! (.*), Sum (\S+)")
STEP = re.compile(r"TStep \d+, Time=(\S+)")
SNAPSHOT = re.compile(r"(?:distributions|x_ray_data)_(.+)\.csv")
# These warnings the record tells in its own key.
DEFAULTED = "warning: parameter file "


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
    run.input_parameters  # may have problems, too
    found = [
        *_end(run),
        *(_record(run.record, run.directory) if run.record else _log(run)),
        *_earlier(run),
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
    if run.record and run.record.exit_status is None:
        return [Notice(f"This run did not end: something killed it at {of}.", True)]
    if run.record and run.record.exit_status != 0:
        why = run.record.messages[-1] if run.record.messages else "without a word"
        return [Notice(f"This run ended early, at {of}: {why}", True)]
    if run.record:
        return []
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


def _record(record: Record, directory: Path) -> list[Notice]:
    """Defaults, changed inputs, probabilities above 1 and warnings, as the record has them."""
    found = []
    if record.defaults:
        text = "Missing and replaced by default values: " + ", ".join(record.defaults) + "."
        found.append(Notice(text, True))
    if changed := record.changed_inputs(directory):
        found.append(Notice(f"Changed since this run has read them: {', '.join(changed)}.", True))
    above = record.probabilities_above_1
    if above["draws"]:
        found.append(_above_1(steps=record.steps, bad_steps=above["steps"], counts=above["draws"],
                              first=above["first_time"], largest=above["largest_sum"]))  # fmt: skip
    warnings = [text for text in record.messages if text.startswith("warning: ")]
    return found + [Notice(f"{text[9:]}.", True) for text in warnings if not text.startswith(DEFAULTED)]


def _above_1(steps: int, bad_steps: int, counts: dict[str, int], first: float | str, largest: float) -> Notice:
    kinds = ", ".join(f"{count} x {kind}" for kind, count in counts.items())
    text = (
        f"Probabilities of a step exceeded 1 in {sum(counts.values())} draws ({kinds}), in {bad_steps} of "
        f"{steps} steps, first at time {float(first):g}; the largest sum is {largest:.3g}. "
        "The step is too long for these rates."
    )
    return Notice(text, True)


def _earlier(run: Run) -> list[Notice]:
    """Files that an earlier run has left in the directory."""
    snapshots = [t for path in run.earlier for t in SNAPSHOT.findall(path.name)]
    others = [path.name for path in run.earlier if not SNAPSHOT.match(path.name)]
    found = []
    if snapshots:
        times = ", ".join(sorted(set(snapshots), key=_number))
        found.append(Notice(f"The snapshots at time {times} are of an earlier run, and left out.", True))
    if others:
        found.append(Notice(f"Of an earlier run, and left out: {', '.join(others)}.", True))
    return found


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
    steps = 0
    time, first = "0", ""
    worst, counts = 0.0, dict[str, int]()
    messages = []
    bad_steps = set()
    with open(paths[0], errors="replace") as file:
        for line in file:
            if step := STEP.match(line):
                steps, time = steps + 1, step[1]
            elif above := SUM_ABOVE_1.search(line):
                first = first or time
                counts[above[1]] = counts.get(above[1], 0) + 1
                worst = max(worst, _number(above[2]))
                bad_steps.add(steps)
            elif line.startswith("tavelo: "):
                messages.append(Notice(f"{paths[0].name}: {line.strip()}", True))
    above = [_above_1(steps, len(bad_steps), counts, first, worst)] if counts else []
    return [*messages[:5], *above]


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
