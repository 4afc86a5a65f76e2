"""Runs of the program that the benchmarks time: an example, longer or shorter, with some keys changed."""

import os
import re
import subprocess
import tempfile
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).resolve().parents[1]


class Workload(NamedTuple):
    """An example with another end, some other values of its keys, and some files in the place of its own."""

    name: str
    example: str
    end: str  # time of the last row of its protocol [s]
    keys: dict[str, dict[str, str]] = {}  # file: {key: value}
    files: dict[str, str] = {}  # file: text


def filaments(number: int) -> dict[str, dict[str, str]]:
    return {"numeric_mc.prm": {"filaments": str(number)}}


PROTEIN_C = {
    "geom_vertebrae.prm": {"proteinCIndicator": "1"},
    "proteinC_ConstantStiffness.prm": {"k": "0.3"},
}
TWITCH = "0.00025 0 3 0.02 0.003 1.0e-5 1.0e-7"
THREE_TWITCHES = {
    "ca_protocol.dat": f"0.0 0.00025 0 0 1.0e-7\n0.05 {TWITCH}\n0.35 {TWITCH}\n0.65 {TWITCH}\n"
}
FULL_CALCIUM = {"ca_protocol.dat": "0.0 0.00025 0 0 1.0e-5\n"}

# All reach their plateau, and take the version of 1.5 ms per isometric step 3 to 40 s.
WORKLOADS = [
    Workload("isometric-10", "isometric", "3.0"),
    Workload("isometric-100", "isometric", "0.3", filaments(100)),
    Workload("isometric-1000", "isometric", "0.1", filaments(1000)),
    Workload("duke-rigid-segments", "calcium_tetanus", "0.65"),
    Workload("flexible-twitch", "twitch_flexible", "0.95", files=THREE_TWITCHES),
    Workload("flexible-full-calcium", "twitch_flexible", "0.95", files=FULL_CALCIUM),
    Workload("series", "series", "1.2"),
    Workload("titin-protein-c", "titin_stretch/active", "2.0", PROTEIN_C),
    Workload("nine-states", "nine_state", "2.0"),
]


def with_keys(text: str, keys: dict[str, str], where: str) -> str:
    """A parameter file with other values of some of its keys, each of which it must have once."""
    for key, value in keys.items():
        text, n = re.subn(rf"(?m)^(\s*set {key}\s*=).*$", rf"\g<1> {value}", text)
        if n != 1:
            raise SystemExit(f"bench: {where} has the key {key} {n} times, not once")
    return text


def protocol(rows: list[str], end: str, single_step: bool) -> str:
    """The rows of a protocol up to another end, or for the first step alone."""
    if single_step:
        end = rows[0].split()[1]
        rows = [rows[0], rows[0]]
    return "\n".join([*rows[:-1], " ".join([end, *rows[-1].split()[1:]])]) + "\n"


def lay(workload: Workload, directory: Path, single_step: bool) -> None:
    """Writes the input of a run."""
    for source in (ROOT / "examples" / workload.example).iterdir():
        if source.suffix in (".prm", ".dat"):
            keys = workload.keys.get(source.name, {})
            (directory / source.name).write_text(with_keys(source.read_text(), keys, source.name))
    for name, text in workload.files.items():
        (directory / name).write_text(text)
    rows = (directory / "protocol.dat").read_text().splitlines()
    (directory / "protocol.dat").write_text(protocol(rows, workload.end, single_step))


class Spent(NamedTuple):
    seconds: float  # of user CPU
    memory: float  # the most that was resident [MB]
    result: bytes  # result.csv


def run(program: Path, workload: Workload, single_step: bool = False) -> Spent:
    with tempfile.TemporaryDirectory(prefix="tavelo-bench-") as name:
        lay(workload, Path(name), single_step)
        process = subprocess.Popen([program], cwd=name, stdout=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            raise SystemExit(f"bench: {workload.name}: {program} ended with an error")
        return Spent(usage.ru_utime, usage.ru_maxrss / 1024, (Path(name) / "result.csv").read_bytes())


def run_without_start(program: Path, workload: Workload) -> Spent:
    """A run, with the CPU time of all its steps but the first."""
    start = run(program, workload, single_step=True)
    whole = run(program, workload)
    return whole._replace(seconds=whole.seconds - start.seconds)


def steps_in(result: bytes) -> int:
    """Rows of result.csv."""
    return result.count(b"\n") - 1
