"""The program: where it is, what it is, and how directories are given to it."""

import contextlib
import os
import re
import shutil
import signal
import subprocess
import tempfile
import threading
from collections.abc import Callable
from dataclasses import dataclass, field
from pathlib import Path
from typing import TextIO

from .errors import StudyError

ROOT = Path(__file__).resolve().parents[3]
RELEASE_BUILD = ROOT / "build" / "release" / "tavelo"
LISTING = "TaveloOutput.lst"  # which a run writes first
BETWEEN_LOOKS = 1.0  # s
_LINE = re.compile(r"^tavelo: ([^:]+): (.*)$")
_FAILED = re.compile(r"failed(: | with exit status )")
_INTERRUPTED = re.compile(r"interrupted by SIG(INT|TERM)|failed: (Terminated|Interrupt)")

_live: set[subprocess.Popen[str]] = set()
_stopping = threading.Event()


def find_program(named: Path | None) -> Path:
    """The program that is named, else that of TAVELO in the environment, that in the path, the built one."""
    if named:
        return _existing(named)
    if "TAVELO" in os.environ:
        return _existing(Path(os.environ["TAVELO"]))
    return _existing(Path(shutil.which("tavelo") or RELEASE_BUILD))


def _existing(path: Path) -> Path:
    if not os.access(path, os.X_OK) or path.is_dir():
        raise StudyError(f"{path}: no such program; build it, or name it with --program PATH")
    return path.resolve()


def version_of(program: Path) -> str:
    """What `--version` prints."""
    result = subprocess.run([program, "--version"], capture_output=True, text=True, check=False)
    if result.returncode != 0 or not result.stdout:
        raise StudyError(f"{program} --version: {result.stderr.strip() or 'says nothing'}")
    return result.stdout


@dataclass
class Ended:
    """How a call of the program ended, and what it told of each directory."""

    status: int
    failed: dict[str, str] = field(default_factory=dict)
    told: dict[str, list[str]] = field(default_factory=dict)
    was_interrupted: bool = False
    rest: str = ""  # what it told of none


def run_program(
    program: Path, folder: Path, names: list[str], *options: str, on_end: Callable[[list[str], Ended], None] | None = None
) -> Ended:
    """Runs in the directories of a folder, one after the other.

    `on_end` is told about once a second which of them have ended, each once, while others go on; those
    that end last it isn't told of."""
    command = [str(program), "-q", *options, "-"]
    if shutil.which("setpriv"):  # nobody would stop the program if this process were killed
        command = ["setpriv", "--pdeathsig", "TERM", *command]
    # Appending, as the place at which to read and to write is one for both processes.
    with tempfile.TemporaryFile("a+", errors="replace") as messages:
        process = subprocess.Popen(
            command, cwd=folder, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=messages,
            text=True, start_new_session=True,
        )  # fmt: skip
        _live.add(process)
        try:
            if _stopping.is_set():
                process.terminate()
            assert process.stdin
            with contextlib.suppress(BrokenPipeError):
                process.stdin.write("\n".join(names) + "\n")
                process.stdin.close()
            going = list(names)
            while (status := _wait(process)) is None:
                if on_end:
                    ended = _ended(0, _text(messages), set(names))
                    over = _over(folder, going, ended)
                    del going[: len(over)]
                    on_end(over, ended)
        finally:
            _live.discard(process)
        return _ended(status, _text(messages), set(names))


def _wait(process: subprocess.Popen[str]) -> int | None:
    try:
        return process.wait(timeout=BETWEEN_LOOKS)
    except subprocess.TimeoutExpired:
        return None


def _text(messages: TextIO) -> str:
    messages.seek(0)
    return messages.read()


def _over(folder: Path, going: list[str], ended: Ended) -> list[str]:
    """Those behind which another one has begun, or failed to."""
    for place in range(len(going) - 1, 0, -1):
        if going[place] in ended.failed or (folder / going[place] / LISTING).exists():
            return going[:place]
    return []


def _ended(status: int, text: str, names: set[str]) -> Ended:
    ended = Ended(status, was_interrupted=_stopping.is_set() or status == -signal.SIGTERM)
    for line in text.splitlines():
        found = _LINE.match(line)
        ended.was_interrupted |= bool(_INTERRUPTED.search(line))
        if not found or found[1] not in names:
            ended.rest += line + "\n"
        elif _FAILED.match(found[2]):
            told = [t for t in ended.told.get(found[1], []) if not t.startswith("warning")]
            ended.failed[found[1]] = told[-1] if told else found[2]
        else:
            ended.told.setdefault(found[1], []).append(found[2])
    return ended


def stop_all() -> None:
    """Ends all runs of this process between two steps, and lets none begin."""
    _stopping.set()
    for process in tuple(_live):
        process.terminate()


def go_on() -> None:
    """Takes `stop_all` back."""
    _stopping.clear()
