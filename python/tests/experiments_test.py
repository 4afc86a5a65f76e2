"""Would catch windows that take a row too many, and errors that aren't those of the mean."""

import pandas as pd
import pytest
from tavelo_tools.experiments import averaged, mean_between, step_protocol, step_response


def test_means_over_seeds_have_the_standard_error_of_the_mean() -> None:
    # SD of 1, 2, 6 is the root of 7.
    found = averaged([{"force": 1.0}, {"force": 2.0}, {"force": 6.0}])
    assert found == pytest.approx({"force": 3.0, "force_sem": (7 / 3) ** 0.5, "n": 3})
    assert averaged([{"force": 1.0}])["force_sem"] == 0.0


def test_a_window_ends_with_its_last_row_and_begins_behind_its_first() -> None:
    table = pd.DataFrame({"time": [0.1, 0.2, 0.3, 0.4], "force": [1.0, 2.0, 4.0, 8.0]})
    assert mean_between(table, "force", 0.1, 0.3) == 3.0


def test_the_response_to_a_step_is_measured_where_the_protocol_has_it() -> None:
    times = [float(row.split()[0]) for row in step_protocol(0.15, -4).splitlines()]
    assert times == pytest.approx([0.0, 0.15, 0.15005, 0.162])
    table = pd.DataFrame({"time": [0.146, 0.15, 0.15001, 0.1531, 0.156], "force": [3.0, 5.0, 2.0, 3.0, 5.0]})
    assert step_response(table, 0.15) == {"T0_pN": 4.0, "T1": 0.5, "T2": 1.0}
