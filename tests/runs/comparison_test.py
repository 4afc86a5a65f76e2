"""Would catch a comparison of results that lets a changed number, text, row or column pass."""

import pytest
from comparison import first_difference

TABLE = "Time,Force,State\n0.1,  1.00000e+02,a,\n0.2,  1.01000e+02,b,\n"


def test_the_same_table_has_no_difference() -> None:
    assert first_difference(TABLE, TABLE) is None
    assert first_difference("", "") is None


def test_the_way_a_number_is_written_does_not_matter() -> None:
    assert first_difference(TABLE, TABLE.replace("  1.00000e+02", "100.0")) is None


@pytest.mark.parametrize(
    ("expected", "found", "is_same"),
    [
        ("1000.0", "1000.000009", True),  # relative 9e-9
        ("1000.0", "1000.000011", False),  # relative 1.1e-8
        ("0.0", "-9e-10", True),  # below the floor of 1e-9
        ("0.0", "1.1e-9", False),
        ("1.0", "-1.0", False),
        ("1.0", "nan", False),
        ("nan", "nan", False),
        ("1.0", "one", False),
        ("a", "a ", False),
    ],
)
def test_tolerance_of_a_cell(expected: str, found: str, is_same: bool) -> None:
    assert (first_difference(expected, found) is None) == is_same


@pytest.mark.parametrize(
    ("found", "message"),
    [
        (
            TABLE.replace("1.01000e+02", "1.01001e+02"),
            "line 3, column 2 (Force): expected '1.01000e+02', found '1.01001e+02'",
        ),
        (TABLE.replace("a,", "c,"), "line 2, column 3 (State): expected 'a', found 'c'"),
        (
            TABLE.replace("State", "state"),
            "line 1, column 3 (State): expected 'State', found 'state'",
        ),
        (TABLE.replace("b,", "b"), "line 3: expected 4 cells, found 3"),
        (TABLE + "0.3,1,c,\n", "rows are extra: expected 3 lines, found 4"),
        (TABLE[: TABLE.index("0.2")], "rows are lost: expected 3 lines, found 2"),
        ("", "rows are lost: expected 3 lines, found 0"),
    ],
)
def test_a_difference_is_named(found: str, message: str) -> None:
    assert first_difference(TABLE, found) == message
