"""A short real run, and directories made by hand."""

import os
import shutil
import subprocess
from collections.abc import Callable
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
SNAPSHOTS = "WritingDistributionSteps.dat"


@pytest.fixture(scope="session")
def real_run(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """30 steps of the regulated tetanus, with two snapshots of bonds and lattice; its log is kept."""
    directory = tmp_path_factory.mktemp("real") / "tetanus"
    directory.mkdir()
    example = ROOT / "examples" / "calcium_tetanus"
    for file in (*example.glob("*.prm"), *example.glob("*.dat")):
        shutil.copy(file, directory)
    (directory / "protocol.dat").write_text("0 0.0001 0 0 0\n0.003 0.0001 0 0 0\n")
    (directory / "ca_protocol.dat").write_text("0 0.0001 0 0 1e-5\n")
    (directory / SNAPSHOTS).write_text("time\n0.002\n0.003\n")
    (directory / "WritingLatticeSteps.dat").write_text("time\n0.002\n0.003\n")
    with open(directory / "tavelo.log", "w") as log:
        subprocess.run([os.environ["TAVELO"]], cwd=directory, stdout=log, check=True)
    return directory


@pytest.fixture
def copy_of_run(real_run: Path, tmp_path: Path) -> Path:
    """A copy of the real run to damage."""
    return Path(shutil.copytree(real_run, tmp_path / "copy"))


@pytest.fixture
def made_run(tmp_path: Path) -> Path:
    """Three steps in files written by hand: two filaments, the two-state model, no regulation."""
    directory = tmp_path / "made"
    directory.mkdir()
    files = {
        "TaveloOutput.lst": "\t\t****\n\t\t*** T A V E L O ***\n\t\t****\n\n\n"
        "\t*** SIMULATION PARAMETERS ************\n\n\tModel:\t\t\tHuxley\n\tRandom Seed:\t7\n\n"
        "\t*** MC MODEL PARAMETERS **************\n\n\tfilaments number:\t\t2\n"
        "\tfull_sarcomere:\t\t0\n\tactivation:\t\tNone\n\tdispSqLimit:\t1.0e-06 nm\n\n"
        "\t*** Geometry VERTEBRAE ***************\n\n\t\tMyosin\n\tdx_myosin:\t 14.3\n"
        "\tSlowMyosinHeads:\t\t30 [%]\n\n\t*** MECHANICAL PROTOCOL ****\n\n0.00 0.10 0 0 0.00 \n\n",
        "protocol.dat": "0 0.1 0 0 0\n0.3 0.1 0 0 0\n",
        "result.csv": "Time,Force,a,b,CB_per_filament,CB_ProteinC_per_filement\n"
        "0.10000000000,  1.00000e+01, 1.0e-01,-2.0e-01, 1.5,\n"
        "0.20000000000, -4.00000e+01, 2.0e-01,-3.0e-01, 2.5,\n"
        "0.30000000000,  3.00000e+01, 3.0e-01,-4.0e-01, 4.0,\n",
        "cb_states_file.csv": "Time,State1,State2,State3\n0,0,0,\n0.1,0,3,\n0.2,1,4,\n0.3,0,8,\n",
        "Myosin_head_states.csv": "10,0,\n7,3,\n6,4,\n2,8,\n",
        "Kacenja.csv": "Time,Attachment number,Detachment number\n0.1,3,0\n0.2,5,1\n0.3,9,1\n",
    }
    for name, text in files.items():
        (directory / name).write_text(text)
    return directory


@pytest.fixture
def series(made_run: Path) -> Callable[..., list[Path]]:
    """Copies of the run made by hand, for pairs of a rate f1 and a seed; forces grow with both."""

    def copy(f1: float, seed: int) -> Path:
        directory = Path(shutil.copytree(made_run, made_run.parent / f"run{f1:g}_{seed}"))
        listing = directory / "TaveloOutput.lst"
        listing.write_text(listing.read_text().replace("Seed:\t7", f"Seed:\t{seed}"))
        (directory / "simulation.prm").write_text(f"set random_seed={seed}\n")
        for kind in ("slow", "fast"):
            (directory / f"model_huxley_{kind}.prm").write_text(f"set f1 = {f1}\n")
        rows = "".join(f"{t},{t * f1 * seed},0,-0.1,{seed - 1},\n" for t in (0.1, 0.2, 0.3))
        (directory / "result.csv").write_text(f"Time,Force,a,b,c,d\n{rows}")
        return directory

    return lambda *pairs: [copy(*pair) for pair in pairs]
