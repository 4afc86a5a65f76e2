"""A Slurm of its own on this host, in the foreground: no systemd, no munge, nothing left behind."""

import os
import shutil
import socket
import subprocess
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

CONFIGURATION = """ClusterName=test
SlurmctldHost={host}
AuthType=auth/none
CryptoType=crypto/none
CredType=cred/none
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerParameters=sched_interval=1,sched_min_interval=1000,bf_interval=1,batch_sched_delay=0
SlurmUser=root
SlurmdUser=root
ReturnToService=2
SlurmctldPort={port}
SlurmdPort={next_port}
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
NodeName={host} CPUs={cpus} RealMemory=1000 State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
"""


def why_not() -> str:
    """Why there can be no Slurm here; empty if there can."""
    if not (shutil.which("slurmctld", path=_path()) and shutil.which("sbatch")):
        return "slurm-wlm isn't installed (tools/setup tools/packages-test.txt)"
    return "" if os.geteuid() == 0 else "slurmd needs root"


def _path() -> str:
    return os.environ["PATH"] + ":/usr/sbin"


def _free_ports() -> tuple[int, int]:
    with socket.socket() as first, socket.socket() as second:
        for server in (first, second):
            server.bind(("", 0))
        return first.getsockname()[1], second.getsockname()[1]


@contextmanager
def cluster(folder: Path) -> Iterator[dict[str, str]]:
    """A running cluster; yields the environment in which its commands work."""
    for name in ("state", "spool"):
        (folder / name).mkdir(parents=True)
    host = socket.gethostname().split(".")[0]
    port, next_port = _free_ports()
    configuration = folder / "slurm.conf"
    cpus = os.cpu_count()  # a node with more than its machine has is drained
    configuration.write_text(
        CONFIGURATION.format(host=host, port=port, next_port=next_port, folder=folder, cpus=cpus)
    )
    environment = os.environ | {"SLURM_CONF": str(configuration), "PATH": _path()}
    daemons = []
    try:
        for name in ("slurmctld", "slurmd"):
            with open(folder / f"{name}.log", "w") as log:
                command = [name, "-D"]
                daemons.append(subprocess.Popen(command, env=environment, stdout=log, stderr=log))
        _wait_until_idle(environment)
        yield environment
    finally:
        for daemon in reversed(daemons):
            daemon.terminate()
            daemon.wait()


def _wait_until_idle(environment: dict[str, str]) -> None:
    for _ in range(600):
        # srun waits for the node by itself, but not for the controller.
        told = subprocess.run(["srun", "true"], env=environment, capture_output=True, check=False)
        if told.returncode == 0:
            return
    raise RuntimeError("Slurm doesn't come up")
