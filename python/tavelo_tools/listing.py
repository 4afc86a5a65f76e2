"""The listing of a run and the parameter files beside it, as tables."""

import re
from pathlib import Path

import pandas as pd

from .numbers import read_text

COLUMNS = ["section", "name", "value", "unit"]
# In the listing also "block": a section that several components write, each filament's regulation
# say, is a block of its own for each of them.
LISTING_COLUMNS = [*COLUMNS, "block"]

# Units of the listed values, by label; rates and plain numbers have none here.
UNITS = {
    **dict.fromkeys(("D", "delta", "h", "dx_myosin", "dx_actin", "length_actin", "a_offset"), "nm"),
    **dict.fromkeys(("myosin_offset", "radius_actin", "radius_myosin", "xamax"), "nm"),
    **dict.fromkeys(("d_actin_myosin", "titin_length"), "nm"),
    **dict.fromkeys(("e_mysoin", "e_actin1", "e_actin2"), "pN/nm^2"),
    **dict.fromkeys(("a_mysoin", "a_actin1", "a_actin2"), "nm^2"),
    **dict.fromkeys(("RT", "dGStroke", "c_1", "c_2", "c_3", "c_4"), "pN nm"),
    **dict.fromkeys(("f1", "g1", "g2", "k_adp", "k12", "k_cap"), "1/time"),
    **dict.fromkeys(("phi_plus", "phi_minus", "sd_fac"), "rad"),
    "actin_distance": "m",
    "xi": "1/m",
}

_HEADING = re.compile(r"^\t*\*\*\* (.*?)[ *]*$")
_GROUP = re.compile(r"^(?:\t\t|# )([^\t=]+?):?$")
_COMPONENT = re.compile(r"\b[A-Z]{6,}\b")  # a heading with such a word is a component's
_ENTRY = re.compile(r"^\t*([^\t:=]+?)\s*[:=]\s*(.*)$")
_VALUE_WITH_UNIT = re.compile(r"^([-+.\deE]+) (?:\[(.+)\]|([a-zA-Z]+))$")


def read_listing(path: Path) -> pd.DataFrame:
    """Section, name, value, unit and block of each listed parameter, in the order of the listing."""
    rows: list[list[object]] = []
    section, group, block, line_of_protocol = "", "", 0, 0
    for line in read_text(path).splitlines():
        heading = _HEADING.match(line) or _GROUP.match(line)
        entry = _ENTRY.match(line)
        if heading and not line.strip().startswith("****"):
            name = heading[1].strip()
            if line.lstrip().startswith("***") or _COMPONENT.search(name):
                section, group, block, line_of_protocol = name, "", block + 1, 0
            else:
                group = name
        elif entry:
            where = f"{section}, {group}" if group else section
            rows.append([where, *_entry(entry[1].strip(), entry[2].strip()), block])
        elif section.endswith("PROTOCOL") and line.strip():
            line_of_protocol += 1
            rows.append([section, f"row {line_of_protocol}", line.strip(), "", block])
    return pd.DataFrame(rows, columns=LISTING_COLUMNS)


def _entry(name: str, value: str) -> list[str]:
    united = _VALUE_WITH_UNIT.match(value)
    if united:
        return [name, united[1], united[2] or united[3]]
    return [name, value, UNITS.get(name, "")]


def value_of(parameters: pd.DataFrame, name: str) -> str | None:
    """The value of the first parameter of that name; "random_seed" finds "Random Seed", too."""
    names = parameters["name"].astype(str)
    found = parameters.loc[names == name, "value"]
    if found.empty:
        found = parameters.loc[names.map(_plain) == _plain(name), "value"]
    return None if found.empty else str(found.iloc[0])


def _plain(name: str) -> str:
    return re.sub(r"[\W_]", "", name).lower()


def settings_of(file: str, text: str) -> pd.DataFrame:
    """What the text of a parameter file sets: file and subsections, key, value."""
    rows = []
    sections: list[str] = []
    for line in text.splitlines():
        words = line.split("#")[0].strip()
        if words.startswith("subsection "):
            sections.append(words.removeprefix("subsection ").strip())
        elif words == "end":
            del sections[-1:]
        elif words.startswith("set ") and "=" in words:
            key, _, value = words.removeprefix("set ").partition("=")
            rows.append([", ".join([file, *sections]), key.strip(), value.strip(), ""])
    return pd.DataFrame(rows, columns=COLUMNS)
