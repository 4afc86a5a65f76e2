"""Would catch a study that loses or doubles runs on a cluster, or when part of one dies."""

import os
import signal
import subprocess
from pathlib import Path

import pandas as pd
import pytest
import slurm
from distributed import Client
from study_test import COMMAND, PLAN, write_plan
from tavelo_tools import Study

MANY = PLAN.replace("[100, 150]", "[100, 125, 150]").replace("seeds = 3", "seeds = 6")  # 36 runs


def check_whole(plan: Path, runs: int) -> None:
    """Every run is there once, with its measures, and nothing lies about."""
    table = pd.read_csv(plan.with_suffix("") / "runs.csv")
    assert (table["status"] == "done").all()
    assert table["run"].nunique() == len(table) == runs
    assert table["force"].notna().all()
    assert len(list(plan.with_suffix("").glob("runs/*/*.json"))) == runs


def test_a_scheduler_of_dask_whose_worker_is_killed(tmp_path: Path) -> None:
    plan = write_plan(tmp_path, MANY)
    where = tmp_path / "scheduler.json"
    options = ["--host", "127.0.0.1", "--no-dashboard"]
    processes = [subprocess.Popen(["dask-scheduler", *options, "--port", "0", "--scheduler-file", where],
                                  stderr=subprocess.DEVNULL)]  # fmt: skip
    worker = ["dask-worker", "--scheduler-file", where, "--nthreads", "1", "--no-nanny", "--no-dashboard"]
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    # The workers find the package by themselves.
    environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
    processes += [subprocess.Popen(worker, cwd=tmp_path, env=environment, **quiet) for _ in range(2)]
    try:
        while not where.exists() or not where.stat().st_size:
            pass
        with Client(scheduler_file=str(where)) as client:
            client.wait_for_workers(2)
            address = client.scheduler.address
        study = subprocess.Popen([*COMMAND, "run", plan, "--scheduler", address])
        processes.append(study)
        while study.poll() is None and not list(tmp_path.glob("plan/runs/*/*.json")):
            pass
        processes[1].send_signal(signal.SIGKILL)
        assert study.wait() == 0
    finally:
        for process in processes:
            process.kill()
            process.wait()
    check_whole(plan, 36)


@pytest.mark.skipif(bool(slurm.why_not()), reason=slurm.why_not())
def test_an_array_job_of_slurm(tmp_path: Path) -> None:
    plan = write_plan(tmp_path)
    command = [*COMMAND, "run", plan, "--slurm", "--runs-per-task", "3", "--mem", "100M", "--time", "5"]
    shown = subprocess.run([*command, "--dry-run"], capture_output=True, text=True, check=True).stdout
    assert "#SBATCH --array=1-4\n" in shown and "#SBATCH --mem=100M\n" in shown
    assert not list(tmp_path.glob("plan/runs"))
    assert Study.load(plan).run(jobs=2, numbers=range(4)) == []
    with slurm.cluster(tmp_path / "slurm") as environment:
        first = subprocess.run(command, env=environment, capture_output=True, text=True, check=True)
        assert "8 runs in 3 tasks" in first.stdout  # of the other 4 none again
        again = subprocess.run(command, env=environment, capture_output=True, text=True, check=False)
        assert again.returncode == 1 and "is still in the queue" in again.stderr
        job = (tmp_path / "plan" / "slurm" / "jobs").read_text().split()[1]
        wait = ["srun", "--quiet", f"--dependency=afterany:{job}", "true"]
        subprocess.run(wait, env=environment, check=True)
    check_whole(plan, 12)


def test_shards_share_the_runs(tmp_path: Path) -> None:
    plan = write_plan(tmp_path)
    shards = [subprocess.Popen([*COMMAND, "run", plan, "-j", "1", "--shard", f"{i}/2"]) for i in (1, 2)]
    assert [shard.wait() for shard in shards] == [0, 0]
    assert not (tmp_path / "plan" / "runs.csv").exists()
    subprocess.run([*COMMAND, "report", plan], check=True, stdout=subprocess.DEVNULL)
    check_whole(plan, 12)
