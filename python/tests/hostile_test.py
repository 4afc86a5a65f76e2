"""Would catch a reader that ends in an exception, or a page that can't be made, over a file with anything in it."""

import os
import shutil
from pathlib import Path

import pytest
from hypothesis import HealthCheck, given, settings, strategies as st
from tavelo_tools import read_run
from tavelo_tools.groups import group
from tavelo_tools.noticed import notices
from tavelo_tools.read import RunError

# TAVELO_EXAMPLES=1000 looks longer.
EXAMPLES = int(os.environ.get("TAVELO_EXAMPLES", "15"))

# Files of a run, with a line that each reader knows to take.
FILES = {
    "run.json": b'{"format": 1, "version": {}, "command": [], "seed": 1, "started": "2026-01-01T00:00:00Z"',
    "result.csv": b"0.4,1,2,3,4,\n",
    "cb_states_file.csv": b"0.4,1,2,\n",
    "Myosin_head_states.csv": b"1,2,\n",
    "Kacenja.csv": b"0.4,10,2\n",
    "TaveloOutput.lst": b"\t*** MC MODEL PARAMETERS ***\n\tfilaments number:\t\t2\n0.0 0.1 0 0\n",
    "numeric_mc.prm": b"subsection a\nset b = 1 # c\nend\n",
    "protocol.dat": b"0.0 0.1 0 999 table.dat\n0.5 0.1 1 4 1 2\n",
    "ca_protocol.dat": b"0.0 0.1 0 5 1 1 1 1\n",
    "table.dat": b"0 1\n1 2\n",
    "WritingDistributionSteps.dat": b"time\n0.1\n",
    "distributions_0.1.csv": b"X,Stiffness,Force,Energy,State\n1,2,3,4,1\n",
    "x_ray_data_0.1.csv": b"h\n0,1,0,12,1,2,3\n",
    "bonds_0.1.csv": b"h\n3,1,0,1,1,2,3,4\n",
    "actinSites.csv": b"Filament,Actin,Site count\n1,1,2\nSite\n0\n1\n",
    "TroponinAngles.csv": b"0.1,0.2,1,,0.1,0.2,1\n",
    "convergence_data.csv": b"0.1,1,0,0,0,0,0,0,0,0,9.0,1,0,2,0\n",
    "ActinSegmentStates_Statistics.csv": b"Time,state 1\n0.1,3,4,\n",
    "rates.csv": b"x,0 -> 1,\n1,2,\n",
    "tavelo.log": b"TStep 1, Time=x\nInternal Error!!!! Attach, Sum nan\n",
}

words = st.sampled_from([b"nan", b"inf", b"-1", b"1e999", b"9" * 400, b",", b"\n", b" ", b"\0", b"\xff", b"end\n", b"{", b"[", b"null"])


@st.composite
def contents(draw: st.DrawFn, known: bytes) -> bytes:
    """The known text in pieces, with anything between them."""
    text = b""
    for _ in range(draw(st.integers(0, 4))):
        start, end = sorted(draw(st.tuples(*[st.integers(0, len(known))] * 2)))
        text += known[start:end] + draw(words | st.binary(max_size=20))
    return text


@pytest.mark.parametrize("name", FILES)
@settings(
    max_examples=EXAMPLES,
    deadline=None,
    derandomize=True,
    database=None,
    suppress_health_check=list(HealthCheck),
)
@given(data=st.data())
def test_a_file_with_anything_in_it(made_run: Path, name: str, data: st.DataObject) -> None:
    directory = made_run.parent / "damaged"
    shutil.rmtree(directory, ignore_errors=True)
    shutil.copytree(made_run, directory)
    (directory / name).write_bytes(data.draw(contents(FILES[name])))
    try:
        run = read_run(directory)
    except RunError:
        return
    for key in run:
        run[key]
    notices(run)
    group([run, read_run(made_run)])
