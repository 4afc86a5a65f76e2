"""Runs of the program in fresh directories, for the scripts of this folder."""

import json
import shutil
import subprocess
import tempfile
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

CASES = Path(__file__).resolve().parent
ROOT = CASES.parents[1]
DEFAULT_PROGRAM = ROOT / "build" / "release" / "tavelo"
RECORD = "run.json"


@contextmanager
def fresh_directory(base: str) -> Iterator[Path]:
    """A new directory with the input of an example folder such as "examples/isometric"."""
    with tempfile.TemporaryDirectory(prefix="tavelo-run-") as name:
        directory = Path(name)
        lay_over(ROOT / base, directory)
        yield directory


def lay_over(source: Path, directory: Path) -> None:
    """Copies the files of a folder, but not its README and its pictures."""
    for file in source.iterdir():
        if file.is_file() and file.name != "README.md" and file.suffix != ".png":
            shutil.copy(file, directory)


def files_of(directory: Path) -> dict[str, bytes]:
    """All files by name, the record without what no two runs have in common."""
    files = {file.name: file.read_bytes() for file in directory.iterdir()}
    if RECORD in files:
        record = json.loads(files[RECORD])
        for key in ("command", "started", "ended"):
            del record[key]
        files[RECORD] = json.dumps(record).encode()
    return files


def run(
    program: Path, directory: Path, user: int | None = None
) -> subprocess.CompletedProcess[str]:
    """Runs the program to its end."""
    return subprocess.run(
        [str(program.resolve())],
        cwd=directory,
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        errors="replace",
        check=False,
        user=user,
    )
