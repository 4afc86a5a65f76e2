"""Would catch a swapped column, rows joined with other times, earlier runs taken for this one."""

from pathlib import Path

import numpy as np
import pytest
from tavelo_tools import RunError, read_run
from tavelo_tools.protocol import course, end_time, read_protocol


def test_columns_have_their_names_units_and_values(made_run: Path) -> None:
    run = read_run(made_run)
    assert run["result"]["force"].tolist() == [10.0, -40.0, 30.0]
    assert run["result"]["displacement_myosin"].tolist() == [0.1, 0.2, 0.3]
    assert run["result"]["displacement_actin"].tolist() == [-0.2, -0.3, -0.4]
    assert run["result"]["bound_heads"].tolist() == [1.5, 2.5, 4.0]
    assert "bound_protein_c" not in run["result"]  # the rows end before it
    assert run.unit("result", "force") == "pN per thick filament"
    assert run["head_states"].attrs["units"]["state_1"] == "heads"
    assert run["bound_states"].columns.tolist() == ["time", "state_0", "state_1"]
    assert run["head_states"]["time"].tolist() == [0.0, 0.1, 0.2, 0.3]
    assert run["events"].iloc[2].tolist() == [0.3, 9.0, 1.0]
    assert run.problems == []


def test_the_listing_becomes_a_table(made_run: Path) -> None:
    table = read_run(made_run)["parameters"].set_index("name")
    assert table.loc["Model", "value"] == "Huxley"
    assert table.loc["dispSqLimit", ["value", "unit"]].tolist() == ["1.0e-06", "nm"]
    assert table.loc["SlowMyosinHeads", ["value", "unit"]].tolist() == ["30", "%"]
    assert table.loc["dx_myosin", "section"] == "Geometry VERTEBRAE, Myosin"
    assert table.loc["row 1", "value"] == "0.00 0.10 0 0 0.00"


def test_files_that_grow_from_run_to_run_show_the_last(made_run: Path) -> None:
    states = made_run / "Myosin_head_states.csv"
    states.write_text("99,0,\n98,1,\n" + states.read_text())
    (made_run / "SEE_velocity.csv").write_text("0.1,1,1\n0.2,2,2\n0.1,3,3\n0.2,4,4\n")
    run = read_run(made_run)
    assert run["head_states"]["state_0"].tolist() == [10, 7, 6, 2]
    assert run["see"]["force"].tolist() == [3.0, 4.0]
    assert [str(p) for p in run.problems] == [
        f"{name}: 2 row(s) of earlier runs in this directory, left out"
        for name in ("Myosin_head_states.csv", "SEE_velocity.csv")
    ]


def test_damaged_rows_leave_the_others_at_their_times(made_run: Path) -> None:
    states = made_run / "Myosin_head_states.csv"
    states.write_text("10,0,\n7,\0,\n6,4,\n2,8")
    run = read_run(made_run)
    assert run["head_states"].to_numpy().tolist() == [[0.0, 10.0, 0.0], [0.2, 6.0, 4.0]]
    assert [problem.text for problem in run.problems] == [
        "the last row is cut off",
        "1 row(s) are no numbers or too short, the first in line 2",
    ]


def test_a_short_first_row_does_not_cost_the_others_their_columns(made_run: Path) -> None:
    result = (made_run / "result.csv").read_text().splitlines(keepends=True)
    result[1] = "0.1,10.0,\n"
    (made_run / "result.csv").write_text("".join(result))
    run = read_run(made_run)
    assert run["result"]["bound_heads"].tolist() == [2.5, 4.0]
    assert run.problems[0].text == "1 row(s) are no numbers or too short, the first in line 2"


def test_snapshots_come_in_the_order_of_their_times(made_run: Path) -> None:
    for time in ("10", "2", "0.5"):
        text = f"X,Stiffness,Force,Energy,State\n{time},1.7,3.4,3.4,1\n"
        (made_run / f"distributions_{time}.csv").write_text(text)
    bonds = read_run(made_run)["bonds"]
    assert bonds["time"].tolist() == bonds["strain"].tolist() == [0.5, 2.0, 10.0]
    assert bonds["crown"].isna().all()  # only bonds_T.csv tells


def test_sites_and_rigid_chains(made_run: Path) -> None:
    head, row = "Filament count, Actin per filament\n2,2\n", "Filament,Actin,Site count\n"
    text = "Site state (0-open;1-blocked;2-closed)\n"
    blocks = "".join(f"{row}{f},{a},2\n{text}{f % 2}\n{a}\n" for f in (1, 2) for a in (1, 2))
    (made_run / "actinSites.csv").write_text(head + blocks)
    # Two filaments, four chains of up to three places, the last chain one shorter.
    chains = np.arange(1, 25, dtype=np.int32)
    chains[[11, 23]] = 0
    (made_run / "TroponinAngles.csv").write_bytes(chains.tobytes())
    run = read_run(made_run)
    assert run["sites"].iloc[-1].tolist() == [2, 2, 1, 2]
    assert run["tropomyosin"].iloc[-1].tolist() == [2, 4, 1, 23]
    (made_run / "actinSites.csv").write_text((head + blocks)[:-2])
    assert read_run(made_run)["sites"].shape == (7, 4)


def test_a_real_run_is_read_whole(real_run: Path) -> None:
    run = read_run(real_run)
    for key in run:
        run[key]
    assert run.problems == []
    assert run.filaments == 10
    assert len(run["result"]) == 30
    heads = run["head_states"].drop(columns="time").sum(axis=1)
    assert (heads == 1500).all()
    bonds = run["bonds"].groupby("time").size() / 10
    at = run["result"].set_index("time")["bound_heads"]
    assert bonds.to_dict() == pytest.approx({0.002: at.iloc[19], 0.003: at.iloc[29]})
    bonds = run["bonds"]
    assert np.allclose(bonds["force"], run["xray"]["force"])
    # Crowns are 14.3 nm apart from 125 nm on, and move by little; a head holds one site.
    assert ((bonds["x_head"] - 125) / 14.3).round().tolist() == bonds["crown"].tolist()
    assert not bonds.duplicated(["time", "filament", "head"]).any()
    # From a head 7 nm off the axis to a site 3.5 nm off an axis 30 nm away.
    assert np.hypot(bonds["y"] - bonds["y_head"], bonds["z"] - bonds["z_head"]).between(19.4, 26).all()


def test_the_lattice_holds_the_bonds(real_run: Path) -> None:
    run = read_run(real_run)
    heads, bonds, sites = (run[f"lattice_{part}"] for part in ("heads", "bonds", "sites"))
    assert heads.groupby("time").size().to_dict() == {0.002: 1500, 0.003: 1500}
    assert sites.groupby("time").size().to_dict() == {0.002: 10 * 2 * 379, 0.003: 10 * 2 * 379}
    bound = run["result"].set_index("time")["bound_heads"]
    found = bonds.groupby("time").size() / 10
    assert found.to_dict() == pytest.approx({0.002: bound.iloc[19], 0.003: bound.iloc[29]})
    # Snapshots of bonds may have a head that has just let go in place of the last.
    key = ["time", "filament", "head"]
    both = run["bonds"].merge(bonds, on=key, suffixes=("", "_too")).merge(heads, on=key, suffixes=("", "_of_head"))
    assert len(both) > 0.9 * len(bonds) > 10
    for name in ("strain", "force", "energy", "fibre", "site"):
        assert np.allclose(both[name], both[f"{name}_too"]), name
    for name in ("x", "y", "z"):
        assert np.allclose(both[f"{name}_head"], both[f"{name}_of_head"], atol=1e-5), name
    at_sites = bonds.merge(sites, on=["time", "filament", "fibre", "site"], suffixes=("", "_site"))
    assert np.allclose(at_sites["azimuth"], at_sites["azimuth_site"])
    assert len(at_sites) == len(bonds)


@pytest.mark.parametrize("name, told", [("nowhere", "no such directory"), ("file", "not a directory"),
                                        ("empty", "no outputs of a run")])  # fmt: skip
def test_what_is_no_run_is_refused(tmp_path: Path, name: str, told: str) -> None:
    (tmp_path / "file").touch()
    (tmp_path / "empty").mkdir()
    with pytest.raises(RunError, match=told):
        read_run(tmp_path / name)


def test_a_protocol_prescribes_what_the_program_does(tmp_path: Path) -> None:
    (tmp_path / "table.txt").write_text("0 0\n1 4\n")
    path = tmp_path / "protocol.dat"
    path.write_text("0 0.1 0 0 2\n\n1 0.1 0 1 10 -1\n2 0.1 0 3 0.04 0.004 5 1\n3 0.1 0 0 0\n")
    rows = read_protocol(path)
    assert end_time(rows) == 3.0
    # A row holds up to the step that reaches the next one's start.
    assert course(rows, np.array([0.5, 1.0, 1.5, 2.0])).tolist() == [2.0, 2.0, 4.0, 9.0]
    twitch = course(rows, np.linspace(2.0001, 2.9, 200001))
    assert twitch.max() == pytest.approx(6.0, rel=1e-6)
    path.write_text("0 0.1 0 999 table.txt\n")
    assert end_time(read_protocol(path)) == 1.0
    assert course(read_protocol(path), np.array([0.25])).tolist() == [1.0]
    path.write_text("0 0.1 0 0 1\n0.1 0.1 zero\n")
    with pytest.raises(ValueError, match="line 2"):
        read_protocol(path)
