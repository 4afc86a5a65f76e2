"""Would catch a report that breaks on a damaged run or hides it, loses extremes or needs a network."""

import os
import random
import re
import shutil
import subprocess
from collections.abc import Iterator
from pathlib import Path

import browser
import numpy as np
import pytest
from tavelo_tools import read_run
from tavelo_tools.downsample import downsample, downsample_band
from tavelo_tools.loops import cycles, settled
from tavelo_tools.noticed import notices
from tavelo_tools.plots import MOST_SNAPSHOTS, plots_of_run
from tavelo_tools.quantities import QUANTITIES, Curve
from tavelo_tools.report import make_page

TOOLS = Path(os.environ["TAVELO"]).parent  # the commands stand beside the program


def start(tool: str, *arguments: Path | str) -> subprocess.CompletedProcess[str]:
    command = [str(TOOLS / tool), *map(str, arguments)]
    return subprocess.run(command, capture_output=True, text=True, check=False)


def curves(directory: Path, key: str) -> list[Curve]:
    quantity = next(quantity for quantity in QUANTITIES if quantity.key == key)
    return quantity.curves(read_run(directory))


def said(directory: Path) -> str:
    return "\n".join(notice.text for notice in notices(read_run(directory)))


# Numbers


def test_events_are_counted_per_time_and_filament(made_run: Path) -> None:
    attachments, detachments = curves(made_run, "events")
    assert attachments.values == pytest.approx([15.0, 10.0, 20.0])  # 3, 2, 4 in 0.1 s on two
    assert attachments.time == pytest.approx([0.05, 0.15, 0.25])
    assert detachments.values.sum() == pytest.approx(5.0)


def test_states_are_shares_of_all_and_counts_of_bound_heads(made_run: Path) -> None:
    assert [curve.values.tolist() for curve in curves(made_run, "all_heads")] == [
        [100.0, 70.0, 60.0, 20.0],
        [0.0, 30.0, 40.0, 80.0],
    ]
    assert [curve.label for curve in curves(made_run, "all_heads")] == ["0 detached", "1 attached"]
    assert curves(made_run, "bound_heads")[1].values.tolist() == [0.0, 1.5, 2.0, 4.0]


def test_passes_and_residuals_are_those_of_the_steps(made_run: Path) -> None:
    rows = [(0.1, 1, 9.0), (0.1, 2, 0.5), (0.2, 1, 8.0), (0.3, 1, 7.0), (0.3, 2, 6.0), (0.3, 3, 0.25)]
    text = "".join(f"{t},{p},0,0,0,0,0,0,0,0,{r},1,0,2,0\n" for t, p, r in rows)
    (made_run / "convergence_data.csv").write_text(text)
    assert curves(made_run, "passes")[1].values.tolist() == [2, 1, 3]
    first, last = curves(made_run, "residuals")
    assert first.values.tolist() == [9.0, 8.0, 7.0]
    assert last.values.tolist() == [0.5, 8.0, 0.25]


    (made_run / "convergence_data.csv").write_text("0.1,1,0,0,0,0,0,0,0,0,0,1,0,2,0\n" * 2)
    assert curves(made_run, "residuals") == []


def test_the_protocol_stands_beside_the_response(made_run: Path) -> None:
    (made_run / "protocol.dat").write_text("0 0.1 0 1 -20 1\n0.2 0.1 1 0 150\n0.3 0.1 0 0 0\n")
    length, force = (curves(made_run, key)[-1] for key in ("length", "force"))
    assert length.values == pytest.approx([-1.0, -3.0, np.nan], nan_ok=True)
    assert force.values == pytest.approx([np.nan, np.nan, 150.0], nan_ok=True)
    page = make_page(read_run(made_run), [])
    assert "<pre>0 0.1 0 1 -20 1\n0.2 0.1 1 0 150\n" in page


@pytest.mark.parametrize("table", [False, True])
def test_the_work_of_a_loop(made_run: Path, table: bool) -> None:
    time = np.arange(0.0, 2.5, 0.001)[1:]
    phase = 2 * np.pi * time / 0.5
    row = "0 0.001 0 2 4 2 10 0" if not table else "0 0.001 0 999 length.txt"
    (made_run / "protocol.dat").write_text(f"{row}\n2.499 1 0 0 0\n")
    np.savetxt(made_run / "length.txt", np.column_stack([time, 10 + 4 * np.sin(phase)]))
    force = 100 - 30 * np.cos(phase) + 1e-9
    rows = np.column_stack([time, force, 0 * time, 0 * time, 0 * time])
    np.savetxt(made_run / "result.csv", rows, delimiter=",", header="heading")
    found = cycles(read_run(made_run))
    assert len(found) >= 3
    # An ellipse of half axes 4 nm and 30 pN, run through so that force is high in shortening.
    work = [cycle.work for cycle in settled(found)]
    assert work == pytest.approx([np.pi * 4 * 30] * len(work), rel=0.01)


def test_fewer_points_keep_the_extremes() -> None:
    x = np.linspace(0.0, 1.0, 100_000)
    y = np.random.default_rng(1).normal(size=x.size)
    y[54_321], y[12_345], y[-1] = 99.0, -99.0, 7.0
    few_x, few_y = downsample(x, y)
    assert len(few_x) <= 1500 and np.all(np.diff(few_x) > 0)
    assert (few_y.max(), few_y.min(), few_y[-1]) == (99.0, -99.0, 7.0)
    assert few_x[few_y.argmax()] == x[54_321]
    where, low, high = downsample_band(x, y - 1, y + 1)
    assert (low.min(), high.max()) == (-100.0, 100.0) and len(where) <= 700


# Names and files that are no text


@pytest.mark.parametrize("name", [rb"dose_$5_and_$\x", b"\xff\xfe", b"<b>&"])
def test_names_are_drawn_and_printed_as_they_are(made_run: Path, name: bytes) -> None:
    listing = made_run / "TaveloOutput.lst"
    listing.write_text(listing.read_text().replace("Huxley", r"$\frac{"))
    directory = made_run.rename(Path(os.fsdecode(os.path.join(bytes(made_run.parent), name))))
    command = [str(TOOLS / "tavelo-report"), directory]
    result = subprocess.run(command, capture_output=True, check=False)
    assert result.returncode == 0, result.stderr
    assert result.stdout.splitlines()[0] == bytes(directory / "report.html")
    page = (directory / "report.html").read_text(encoding="utf-8")
    assert r"$\frac{" in page and ("<h1>dose_$5_and_$\\x</h1>" in page or name[0] != ord("d"))
    result = subprocess.run([TOOLS / "tavelo-compare", directory, "--out", directory], capture_output=True)
    assert result.returncode == 0, result.stderr


def test_a_file_that_cannot_be_read_costs_its_own_part_only(made_run: Path) -> None:
    (made_run / "x.prm").mkdir()
    (made_run / "ca_protocol.dat").mkdir()
    os.mkfifo(made_run / "pipe.prm")
    result = start("tavelo-report", made_run)
    assert result.returncode == 0 and "x.prm: can't be read: Is a directory" in result.stderr
    assert "x.prm: can&#x27;t be read" in (made_run / "report.html").read_text()


# What is noticed


def test_nothing_is_noticed_in_a_sound_run(real_run: Path) -> None:
    assert not [notice for notice in notices(read_run(real_run)) if notice.grave]


def test_noticed(made_run: Path) -> None:
    assert "Standard output was not kept" in said(made_run)
    (made_run / "tavelo.log").write_text(
        "TStep 1, Time=0.1\nInternal Error!!!! Attach, Sum 1.2\nInternal Error!!!! Attach, Sum 3.4\n"
        "TStep 2, Time=0.2\nInternal Error!!!! Actin Binding, Sum 1.1\nTStep 3, Time=0.3\n"
        "tavelo: stopped\n"
    )
    text = said(made_run)
    assert "exceeded 1 in 3 draws (2 x Attach, 1 x Actin Binding), in 2 of 3 steps" in text
    assert "largest sum is 3.4" in text and "tavelo: stopped" in text
    result = (made_run / "result.csv").read_text()
    (made_run / "result.csv").write_text(result.replace("0.300", "0.150"))
    assert "result.csv: time goes back 1 time(s), first to 0.15" in said(made_run)
    (made_run / "protocol.dat").write_text("0 0.1 0 0 0\n9 0.1 0 0 0\n")
    assert "did not finish: it ends at time 0.15 of 9" in said(made_run)
    (made_run / "protocol.dat").unlink()
    assert "protocol.dat is missing" in said(made_run)
    (made_run / "Kacenja.csv").unlink()
    assert "Kacenja.csv is missing" in said(made_run)
    (made_run / "cb_states_file.csv").write_text("")
    assert "cb_states_file.csv: empty" in said(made_run)


def test_a_run_that_is_going_on_is_noticed(made_run: Path) -> None:
    command = ["flock", str(made_run / "TaveloOutput.lst"), "sh", "-c", "echo; read line"]
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE) as other:
        assert other.stdout and other.stdin
        other.stdout.readline()  # from here on it holds the lock
        assert "still going on; it stands at time 0.3 of 0.3" in said(made_run)
        other.stdin.close()
    assert "going on" not in said(made_run)


# Damage


def damages(data: bytes) -> Iterator[bytes | None]:
    chance = random.Random(1)
    yield None
    yield b""
    yield data[: len(data) // 2]
    yield data[: data.find(b"\n") + 1]
    yield data[: len(data) // 2] + b"\0" * 100
    yield bytes(chance.randrange(256) for _ in range(2000))
    yield data.replace(b"1", b"nan")
    yield data + data


@pytest.mark.filterwarnings("error")
def test_no_damage_to_a_file_breaks_a_report(copy_of_run: Path) -> None:
    outputs = [path for path in copy_of_run.iterdir() if path.suffix != ".prm"]
    for path in outputs:
        whole = path.read_bytes()
        for damaged in damages(whole):
            path.unlink(missing_ok=True)
            if damaged is not None:
                path.write_bytes(damaged)
            run = read_run(copy_of_run)
            assert plots_of_run(run)
            notices(run)
        path.write_bytes(whole)


@pytest.mark.parametrize("kind", [1, 2, 5])  # empty, cut off, no text
def test_a_report_of_nothing_but_damage(copy_of_run: Path, kind: int) -> None:
    for path in copy_of_run.iterdir():
        damaged = list(damages(path.read_bytes()))[kind]
        assert damaged is not None
        path.write_bytes(damaged)
    result = start("tavelo-report", copy_of_run)
    assert result.returncode == 0
    assert "Traceback" not in result.stderr and "noticed: " in result.stderr
    assert (copy_of_run / "report.html").stat().st_size > 1000


@pytest.mark.parametrize("tool", ["tavelo-report", "tavelo-compare"])
def test_what_is_no_run_gets_one_message(tmp_path: Path, tool: str) -> None:
    result = start(tool, tmp_path)
    assert result.returncode == 1
    assert re.fullmatch(rf"{tool}: .*: no outputs of a run; .*\n", result.stderr)
    assert not list(tmp_path.iterdir())


# Pages


def test_the_report_in_a_browser(real_run: Path, tmp_path: Path) -> None:
    assert start("tavelo-report", real_run, "--out", tmp_path).returncode == 0
    assert (tmp_path / "report.png").stat().st_size > 50_000
    page = (tmp_path / "report.html").read_text()
    assert not re.search(r"""(src|href)=["'](?!#|data:)|url\((?!#)|@import""", page)
    browser.check(tmp_path / "report.html", plots=page.count("<figure>"))
    for title in ("Force", "Length", "States of all heads", "Thin filament", "Strain of bonds"):
        assert f"<h3>{title}</h3>" in page


def test_many_snapshots_become_a_map(made_run: Path) -> None:
    for number in range(MOST_SNAPSHOTS + 3):
        rows = "".join(f"{x},1.7,{1.7 * x},{x * x},1\n" for x in range(number + 1))
        (made_run / f"distributions_{number}.csv").write_text(f"X,Stiffness,Force,Energy,State\n{rows}")
    run = read_run(made_run)
    assert "Snapshot at time [s]" in make_page(run, plots_of_run(run))
