"""Where runs are kept: a folder for each, and beside it a record once it is done or has failed.

    runs/3f/3f09...e1/          input, output and run.json
    runs/3f/3f09...e1.json      its record: done
    runs/3f/3f09...e1.failed    its record: failed, with the message
    work/HOST@PID-N/3f09...e1/  runs that are under way; none of these counts

A run is computed in `work`, moved to `runs` in one step, and then gets its record, which is written
aside and renamed. So whoever is stopped, and wherever, leaves whole runs or none, and two that happen to
compute the same run don't meet.
"""

import contextlib
import json
import os
import shutil
import socket
import threading
from pathlib import Path
from typing import Any

from ..tables import TABLES

DONE, FAILED = ".json", ".failed"
RESULTS = ("result.csv", "run.json", "TaveloOutput.lst", "cb_states_file.csv", "Myosin_head_states.csv")
Record = dict[str, Any]


class Store:
    """The runs of one or several studies."""

    def __init__(self, runs: Path) -> None:
        self.runs = runs
        self.work = runs.parent / "work"

    def folder(self, name: str) -> Path:
        return self.runs / name[:2] / name

    def _record(self, name: str, ending: str) -> Path:
        return self.runs / name[:2] / f"{name}{ending}"

    def states(self) -> dict[str, str]:
        """DONE or FAILED for each run that is either; a done one has no other record."""
        found: dict[str, str] = {}
        for shelf in _names(self.runs):
            for entry in _names(self.runs / shelf):
                name, ending = os.path.splitext(entry)
                if ending == DONE or (ending == FAILED and name not in found):
                    found[name] = ending
        return found

    def read(self, name: str) -> Record | None:
        """The record of a run that is done or has failed."""
        for ending in (DONE, FAILED):
            try:
                record: Record = json.loads(self._record(name, ending).read_bytes())
                return record
            except FileNotFoundError:
                continue
        return None

    def write(self, name: str, record: Record) -> None:
        """Makes a run done, or failed."""
        ending = FAILED if record["status"] == "failed" else DONE
        path = self._record(name, ending)
        path.parent.mkdir(parents=True, exist_ok=True)
        aside = path.with_name(f"{path.name}.{_author()}")
        aside.write_text(json.dumps(record, indent=1) + "\n")
        os.replace(aside, path)
        if ending == DONE:
            self._record(name, FAILED).unlink(missing_ok=True)

    def put(self, name: str, attempt: Path) -> None:
        """Moves the folder of a run that has ended to its place, unless it is there already."""
        place = self.folder(name)
        place.parent.mkdir(parents=True, exist_ok=True)
        with contextlib.suppress(OSError):  # another one was faster: its run is the same
            os.rename(attempt, place)
        shutil.rmtree(attempt, ignore_errors=True)

    def forget(self, name: str) -> None:
        """As if the run had never been."""
        shutil.rmtree(self.folder(name), ignore_errors=True)
        for ending in (DONE, FAILED):
            self._record(name, ending).unlink(missing_ok=True)

    def thin(self, name: str, keep: str) -> None:
        """Leaves all of a run that is done, its input and main results, or only its record."""
        folder = self.folder(name)
        if keep == "measures":
            shutil.rmtree(folder, ignore_errors=True)
        if keep != "results" or not folder.is_dir():
            return
        written = _outputs(folder)
        for path in folder.iterdir():
            if path.name in written and path.name not in RESULTS:
                path.unlink(missing_ok=True)

    def session(self) -> Path:
        """A folder for the runs of this thread that are under way."""
        folder = self.work / _author()
        folder.mkdir(parents=True, exist_ok=True)
        return folder

    def abandoned(self) -> list[Path]:
        """Folders of sessions whose process on this machine has been killed."""
        host = socket.gethostname()
        found = []
        for name in _names(self.work):
            machine, _, rest = name.rpartition("@")
            if machine == host and not Path(f"/proc/{rest.split('-')[0]}").exists():
                found.append(self.work / name)
        return found


def _author() -> str:
    return f"{socket.gethostname()}@{os.getpid()}-{threading.get_ident()}"


def _names(folder: Path) -> list[str]:
    try:
        return os.listdir(folder)
    except (FileNotFoundError, NotADirectoryError):
        return []


def _outputs(folder: Path) -> set[str]:
    return {p.name for p in folder.iterdir() if any(table.matches(p.name) for table in TABLES)}
