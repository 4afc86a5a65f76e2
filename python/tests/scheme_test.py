"""Would catch: steady states that don't balance, a load on the wrong strain, a page without formulas or checks, states
without their names in reports, a refusal that is lost or a traceback, a study that leaves the schemes out."""

import os
import shutil
import subprocess
from pathlib import Path

import numpy as np
import pytest

from tavelo_tools import read_run
from tavelo_tools.groups import conditions
from tavelo_tools.report import write_report
from tavelo_tools.scheme.command import ask, main
from tavelo_tools.scheme.data import from_json
from tavelo_tools.scheme.steady import over_load, over_strain, steady_state, strains_under
from tavelo_tools.study.inputs import input_files

ROOT = Path(__file__).resolve().parents[2]
SCHEMES = ROOT / "examples" / "schemes"
TAVELO = Path(os.environ.get("TAVELO", ROOT / "build" / "release" / "tavelo"))


def test_the_steady_state_of_a_cycle() -> None:
    # Flux 1 -> 2 -> 3 -> 1 at rates a, b, c: shares are as 1/a, 1/b, 1/c.
    a, b, c = 3.0, 5e6, 2e-4
    rates = np.array([[0, a, 0], [0, 0, b], [c, 0, 0]])
    shares = np.array([1 / a, 1 / b, 1 / c])
    assert steady_state(rates) == pytest.approx(shares / shares.sum(), rel=1e-9)
    assert np.isnan(steady_state(np.zeros((3, 3)))).all()
    assert np.isnan(steady_state(np.full((3, 3), np.inf))).all()


def test_steady_states_of_duke_over_strain_and_load() -> None:
    scheme = ask(TAVELO, SCHEMES / "duke.toml")
    assert [state.name for state in scheme.states] == ["detached", "bound", "after the stroke"]
    # 1.7 pN/nm: 3.4 pN at 2 nm, and behind the stroke of 9 nm at -7 nm.
    assert strains_under(scheme, 3.4) == [None, pytest.approx(2.0), pytest.approx(-7.0)]
    assert over_load(scheme, [3.4]).sum() == pytest.approx(1.0)
    # Two states in balance at -7 nm hold as exp(-G/kT), wherever the cycle turns slowly beside it.
    index = int(np.searchsorted(scheme.strain, 3.0))
    shares = over_strain(scheme)[index]
    energies = [state.energy[index] / scheme.kBT for state in scheme.states if state.energy is not None]
    assert shares[2] / shares[1] == pytest.approx(np.exp(energies[1] - energies[2]), rel=0.05)


def test_the_page_says_formulas_and_checks(tmp_path: Path, capsys: pytest.CaptureFixture[str]) -> None:
    text = (SCHEMES / "rombel.toml").read_text().replace('reverse = "balance"', 'reverse = "20"', 1)
    (tmp_path / "mine.toml").write_text(text)
    assert main([str(tmp_path / "mine.toml"), "--out", str(tmp_path / "out"), "--program", str(TAVELO)]) == 0
    page = (tmp_path / "out" / "mine.html").read_text()
    assert "5000 / exp(x) + 1000" in page and "open, stroke" in page
    assert "the cycle" in page and "kT are missing" in page
    assert "kT are missing" in capsys.readouterr().err
    assert (tmp_path / "out" / "mine.png").stat().st_size > 10000
    assert not list(tmp_path.glob("*.csv"))


def test_refusals_are_lines(tmp_path: Path, capsys: pytest.CaptureFixture[str]) -> None:
    (tmp_path / "broken.toml").write_text((SCHEMES / "duke.toml").read_text().replace("exp(-E", "exp(-e"))
    for file, message in (("broken.toml", "transition 1, rate: the formula 'k_bind * exp(-e / kBT)' is wrong at position 15: unexpected 'e'; known: x, F"), ("none.toml", "no such file")):
        assert main([str(tmp_path / file), "--program", str(TAVELO)]) == 1
        told = capsys.readouterr().err
        assert told.startswith("tavelo-scheme: ") and message in told
    with pytest.raises(ValueError):
        from_json("{}x")


def test_a_report_names_states_and_shows_the_scheme(tmp_path: Path) -> None:
    for path in input_files(SCHEMES):
        shutil.copy(path, tmp_path)
    assert (tmp_path / "duke.toml").exists() and not (tmp_path / "force_velocity.toml").exists()
    (tmp_path / "protocol.dat").write_text("0 0.0005 0 0 0\n0.01 0.0005 0 0 0\n")
    subprocess.run([TAVELO, "-q"], cwd=tmp_path, check=True)
    (tmp_path / "scheme_other.json").write_text("{}")
    run = read_run(tmp_path)
    (tmp_path / "duke.toml").write_text((tmp_path / "duke.toml").read_text().replace("k_bind = { value = 20", "k_bind = { value = 30"))
    assert conditions(run)["duke.toml", "k_bind"] == "30"
    assert conditions(run)["duke.toml", "transition 2 rate"].startswith("x < x_cap ? k_12")
    assert run.state_names == ("detached", "bound", "after the stroke")
    html, _ = write_report(run, tmp_path)
    page = html.read_text()
    assert [problem.file for problem in run.problems] == ["scheme_other.json"]
    assert "2 after the stroke" in page and "Scheme duke.toml" in page and "k_adp * exp(" in page
