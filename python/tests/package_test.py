"""Would catch a package that pip can't install without a network, or lacks a command, its types or its version."""

import os
import shutil
import subprocess
import sys
import tomllib
from pathlib import Path

PYTHON = Path(__file__).resolve().parents[1]
PROGRAM = Path(os.environ["TAVELO"])


def output_of(*command: str | Path, cwd: Path) -> str:
    environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
    return subprocess.run(command, cwd=cwd, env=environment, check=True, stdout=subprocess.PIPE, text=True).stdout


def test_pip_installs_it_in_a_virtual_environment(tmp_path: Path) -> None:
    source, place = tmp_path / "python", tmp_path / "environment"
    shutil.copytree(PYTHON, source)
    output_of(sys.executable, "-m", "venv", "--system-site-packages", place, cwd=tmp_path)
    pip = [place / "bin/pip", "install", "-q", "--no-index", "--no-build-isolation", source]
    output_of(*pip, cwd=tmp_path)
    commands = tomllib.loads((source / "pyproject.toml").read_text())["project"]["scripts"]
    assert "tavelo-report" in commands
    for command in commands:
        assert output_of(place / "bin" / command, "--help", cwd=tmp_path).startswith(f"usage: {command} ")
        assert (PROGRAM.parent / command).is_file()
    told = "import tavelo_tools as t; print(t.__version__, t.__file__)"
    version, file = output_of(place / "bin/python", "-c", told, cwd=tmp_path).split()
    assert Path(file).is_relative_to(place) and Path(file).with_name("py.typed").is_file()
    assert f"tavelo {version}\n" in output_of(PROGRAM, "--version", cwd=tmp_path)
    assert f"Version: {version}\n" in output_of(place / "bin/pip", "show", "tavelo-tools", cwd=tmp_path)
