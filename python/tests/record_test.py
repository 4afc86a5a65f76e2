"""Would catch a report that takes another run's files for this one's, or hides how a run ended."""

import json
import os
from collections.abc import Callable
from pathlib import Path

import pytest
from tavelo_tools import read_run
from tavelo_tools.noticed import notices
from tavelo_tools.report import make_page

BONDS = "X,Stiffness,Force,Energy,State\n1,1.7,1.7,0.85,1\n"


def edit(directory: Path, **facts: object) -> None:
    path = directory / "run.json"
    path.write_text(json.dumps(json.loads(path.read_text()) | facts))


def grave(directory: Path) -> list[str]:
    return [notice.text for notice in notices(read_run(directory)) if notice.grave]


def test_files_of_an_earlier_run_are_left_out(copy_of_run: Path) -> None:
    run = read_run(copy_of_run)
    own = run["bonds"]["time"].unique().tolist()
    assert run.record and run.earlier == [] and grave(copy_of_run) == []
    for name, text in {"distributions_0.1.csv": BONDS, "x_ray_data_0.1.csv": "", "energy.csv": ""}.items():
        (copy_of_run / name).write_text(text)
    run = read_run(copy_of_run)
    assert run["bonds"]["time"].unique().tolist() == own
    assert "energy" not in list(run)
    assert grave(copy_of_run) == [
        "The snapshots at time 0.1 are of an earlier run, and left out.",
        "Of an earlier run, and left out: energy.csv.",
    ]


def test_of_a_killed_run_what_is_older_than_it_is_left_out(copy_of_run: Path) -> None:
    edit(copy_of_run, exit_status=None, ended=None, outputs=["result.csv"])
    (copy_of_run / "distributions_0.1.csv").write_text(BONDS)
    os.utime(copy_of_run / "distributions_0.1.csv", (0, 0))
    assert 0.1 not in read_run(copy_of_run)["bonds"]["time"].to_list()
    assert len(read_run(copy_of_run)["events"]) == 30
    assert grave(copy_of_run)[0] == "This run did not end: something killed it at time 0.003 of 0.003."


EXCESS = {"draws": {"Attach": 5, "Actin Binding": 2}, "steps": 3, "first_time": 0.0125, "largest_sum": 2.5}
TOLD = {
    "ends early, at time 0.003 of 0.003: interrupted by SIGTERM": {"exit_status": 1, "messages": ["interrupted by SIGTERM"]},
    "replaced by default values: a.prm, b.prm.": {"defaults": ["a.prm", "b.prm"]},
    "exceeded 1 in 7 draws (5 x Attach, 2 x Actin Binding), in 3 of 30 steps, first at time 0.0125; the largest sum is "
    "2.5.": {"probabilities_above_1": EXCESS},
    "the heading is a number.": {"messages": ["warning: the heading is a number", "warning: parameter file x"]},
    "Changed since this run has read them: protocol.dat.": {"inputs": {"protocol.dat": "0" * 64, "lost.prm": "0" * 64}},
}  # fmt: skip


@pytest.mark.parametrize("told", TOLD)
def test_what_the_record_tells_stands_at_the_top(copy_of_run: Path, told: str) -> None:
    edit(copy_of_run, **TOLD[told])
    (found,) = grave(copy_of_run)
    assert told in found.replace("ended", "ends")
    page = make_page(read_run(copy_of_run), [])
    assert page.index('role="alert"') < page.index(found[:20]) < page.index('class="key"')


DAMAGES: list[Callable[[dict], object]] = [
    lambda facts: [],
    lambda facts: facts | {"started": "yesterday"},
    lambda facts: {key: facts[key] for key in facts if key != "inputs"},
    lambda facts: facts | {"outputs": None},
]


@pytest.mark.parametrize("damage", DAMAGES)
def test_a_damaged_record_is_as_good_as_none(copy_of_run: Path, damage: Callable[[dict], object]) -> None:
    path = copy_of_run / "run.json"
    path.write_text(json.dumps(damage(json.loads(path.read_text()))))
    run = read_run(copy_of_run)
    assert run.record is None
    assert [problem.file for problem in run.problems] == ["run.json"]
