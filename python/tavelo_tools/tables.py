"""The files that a run leaves, each with its tidy column names and their units.

A column's unit "time" is the one that the rates imply, the second unless the user chose otherwise.
Adding an output file to the tools is adding a line to TABLES.
"""

import re
from dataclasses import dataclass

from .listing import LISTING_COLUMNS

Columns = dict[str, str]

STATES: Columns = {"state_": "heads"}  # a name that ends in "_" is numbered from 0 on
STRAINED: Columns = {  # of "distributions_T.csv"
    "strain": "nm",
    "stiffness": "pN/nm",
    "force": "pN",
    "energy": "pN nm",
    "state": "",
}
BOND: Columns = {  # the same, with what is joined from the other two files of a snapshot
    **STRAINED,
    "filament": "",
    "fibre": "",
    "strand": "",
    "site": "",
    "x_rest": "nm",
    "x": "nm",
    "y": "nm",
    "z": "nm",
    "x_head": "nm",
    "y_head": "nm",
    "z_head": "nm",
    "head": "",
    "crown": "",
    "head_in_crown": "",
    "kind": "",
}
PLACE: Columns = {
    "head": "",
    "crown": "",
    "head_in_crown": "",
    "kind": "",
    "y_head": "nm",
    "z_head": "nm",
    "y": "nm",
    "z": "nm",
}
XRAY: Columns = {
    "filament": "",
    "fibre": "",
    "strand": "",
    "site": "",
    "x_rest": "nm",
    "x": "nm",
    "force": "pN",
}
CONVERGENCE: Columns = {
    "time": "time",
    "pass": "",
    "displacement_see": "nm",
    "force_held_ends": "pN",
    "force_first_node": "pN",
    "force_actin_end": "pN",
    "force_see": "pN",
    "correction_first_node": "nm",
    "correction_actin_end": "nm",
    "correction_see": "nm",
    "largest_residual": "pN",
    "unknown_of_residual": "",
    "largest_correction": "nm",
    "unknown_of_correction": "",
    "displacement_actin": "nm",
}
LATTICE: tuple[tuple[str, str, Columns], ...] = (
    (
        "filaments",
        "every filament, at every place round its thick filament",
        {
            "filament": "",
            "place": "",
            "direction": "",
            "origin": "nm",
            "fibre": "",
            "faces": "",
            "first": "nm",
            "last": "nm",
            "bearing": "rad",
            "distance": "nm",
            "radius": "nm",
            "titin_force": "pN",
        },
    ),
    (
        "heads",
        "every head, bound or not,",
        {
            "filament": "",
            "head": "",
            "crown": "",
            "head_in_crown": "",
            "kind": "",
            "state": "",
            "x": "nm",
            "azimuth": "rad",
            "y": "nm",
            "z": "nm",
        },
    ),
    (
        "bonds",
        "every bond that holds",
        {
            "filament": "",
            "head": "",
            "fibre": "",
            "site": "",
            "strain": "nm",
            "strain_with_lever": "nm",
            "stiffness": "pN/nm",
            "force": "pN",
            "energy": "pN nm",
            "bearing": "rad",
            "azimuth": "rad",
        },
    ),
    (
        "sites",
        "every site",
        {
            "filament": "",
            "fibre": "",
            "site": "",
            "state": "",
            "binding_factor": "",
            "x": "nm",
            "azimuth": "rad",
        },
    ),
)
NUMBERS, LISTING, SITES, TROPOMYOSIN, TIMES, VALUES = range(6)


@dataclass(frozen=True)
class Table:
    """A file, or the files of all snapshots, of a run."""

    key: str
    pattern: str  # of the file's name; a group is the time of a snapshot
    about: str
    columns: Columns
    kind: int = NUMBERS
    heading: bool = True
    separator: str = ","
    appends: bool = False  # grows from run to run in a directory
    may_be_empty: bool = True

    def matches(self, name: str) -> re.Match[str] | None:
        return re.fullmatch(self.pattern, name)

    @property
    def is_snapshot(self) -> bool:
        return "(.+)" in self.pattern

    def names(self, width: int) -> list[str]:
        """Names of the first `width` columns; columns that the table doesn't know are numbered."""
        names: list[str] = []
        for name in self.columns:
            if name.endswith("_"):
                names += [f"{name}{number}" for number in range(width - len(names))]
            else:
                names.append(name)
        return (names + [f"column_{number}" for number in range(len(names), width)])[:width]

    def unit(self, name: str) -> str:
        return self.columns.get(name, self.columns.get(re.sub(r"\d+$", "", name), ""))


def _law(key: str, file: str, quantity: str, unit: str, heading: bool) -> Table:
    """A curve of the crossbridge law."""
    about = f"{quantity} of an elastic law over the extension"
    columns = {"extension": "nm", quantity: unit}
    return Table(key, file, about, columns, heading=heading, separator="," if heading else " ")


def _lattice(part: str, about: str, columns: Columns) -> Table:
    """A file of a snapshot of the whole lattice."""
    pattern = rf"lattice_{part}_(.+)\.csv"
    return Table(f"lattice_{part}", pattern, f"{about} at a snapshot of the lattice", {"time": "time", **columns})


TABLES = (
    Table(
        "result",
        r"result\.csv",
        "force, displacements and bonds per step",
        {
            "time": "time",
            "force": "pN per thick filament",
            "displacement_myosin": "nm",
            "displacement_actin": "nm per half-sarcomere",
            "bound_heads": "per thick filament",
            "bound_protein_c": "per thick filament",
        },
        may_be_empty=False,
    ),
    Table(
        "bound_states",
        r"cb_states_file\.csv",
        "heads in the mechanics of the step, by kinetic state",
        {"time": "time", **STATES},
        may_be_empty=False,
    ),
    Table(
        "head_states",
        r"Myosin_head_states\.csv",
        "all heads by kinetic state",
        {"time": "time", **STATES},
        heading=False,
        appends=True,
        may_be_empty=False,
    ),
    Table(
        "events",
        r"Kacenja\.csv",
        "attachments and detachments since the start, all filaments together",
        {"time": "time", "attachments": "", "detachments": ""},
        may_be_empty=False,
    ),
    Table(
        "segments",
        r"ActinSegmentStates_Statistics\.csv",
        "segments of the thin filaments by regulatory state",
        {"time": "time", "segments_": "segments"},
    ),
    Table(
        "calcium",
        r"Ca_function\.csv",
        "values of a log-normal course, per evaluation",
        {"time_in_row": "time", "value": "as in ca_protocol.dat"},
    ),
    Table(
        "see",
        r"SEE_velocity\.csv",
        "series elastic element, per assembly",
        {"time": "time", "force": "pN per thick filament", "velocity": "nm/time"},
        heading=False,
        appends=True,
    ),
    Table(
        "convergence",
        r"convergence_data\.csv",
        "passes of the iteration, up to time 0.5",
        CONVERGENCE,
        heading=False,
    ),
    Table(
        "bonds",
        r"distributions_(.+)\.csv",
        "every bond at a snapshot: its strain, force and state, joined with its two ends in space",
        {"time": "time", "bond": "", **BOND},
    ),
    Table(
        "xray",
        r"x_ray_data_(.+)\.csv",
        "site, coordinates and force of every bond at a snapshot",
        {"time": "time", "bond": "", **XRAY},
    ),
    Table(
        "places",
        r"bonds_(.+)\.csv",
        "head of every bond at a snapshot, and where both ends stand seen end-on",
        {"time": "time", "bond": "", **PLACE},
    ),
    *(_lattice(*part) for part in LATTICE),
    Table(
        "sites",
        r"actinSites\.csv",
        "state of every site at time 0.7 (0 open, 1 blocked, 2 closed)",
        {"filament": "", "fibre": "", "site": "", "state": ""},
        SITES,
    ),
    Table(
        "tropomyosin",
        r"TroponinAngles\.csv",
        "tropomyosin along the thin filaments at time 0.7",
        {
            "filament": "",
            "chain": "",
            "site": "",
            "angle": "rad",
            "angle_sd": "rad",
            "state": "",
        },
        TROPOMYOSIN,
    ),
    Table(
        "atp_6states",
        r"atp_ase_rates_6states\.csv",
        "times at which a head went from state 2 to 3",
        {"time": "time", "count": ""},
        heading=False,
    ),
    Table(
        "atp_8states",
        r"atp_ase_rates_8states\.csv",
        "times at which a head went from state 3 to 4",
        {"time": "time", "count": ""},
        heading=False,
    ),
    Table(
        "first_states",
        r"detached_states_init\.csv",
        "heads by first detached state, a row per filament",
        {"detached_1": "heads", "detached_2": "heads", "detached_3": "heads"},
    ),
    Table(
        "parameters",
        r"TaveloOutput\.lst",
        "all parameters that are in force",
        dict.fromkeys(LISTING_COLUMNS, ""),
        LISTING,
        may_be_empty=False,
    ),
    Table(
        "calcium_constants",
        r"CaActivation[23]x[23]SModel\.lst",
        "constants of the regulation by calcium",
        dict.fromkeys(LISTING_COLUMNS, ""),
        LISTING,
    ),
    Table(
        "vorn_rates",
        r"model_vorn_rates\.csv",
        "rates of the six-state model; slow and fast heads one behind the other",
        {"strain": "nm", **{f"k_{pair}": "1/time" for pair in ("01", "10", "12", "21")}},
        heading=False,
    ),
    Table(
        "energy",
        r"energy\.csv",
        "free energy of each state of the eight-state model",
        {"strain": "nm", "energy_": "pN nm"},
    ),
    Table(
        "rates",
        r"rates\.csv",
        "rate of each transition of the eight-state model",
        {"strain": "nm", "k_": "1/time"},
    ),
    Table(
        "integral",
        r"model_tolen_integral\.dat",
        "integral table of the crossbridge law, nine-state model",
        {"strain": "nm", "integral": "nm"},
        heading=False,
        separator=" ",
    ),
    _law("table_stiffness", r"XB_stiffness\.dat", "stiffness", "pN/nm", False),
    _law("table_force", r"XB_force\.dat", "force", "pN", False),
    _law("table_energy", r"XB_energy\.dat", "energy", "pN nm", False),
    _law("law_stiffness", r"Stiffness\.csv", "stiffness", "pN/nm", True),
    _law("law_force", r"Force\.csv", "force", "pN", True),
    _law("law_energy", r"Energy\.csv", "energy", "pN nm", True),
    Table(
        "iteration_norms",
        r"IterationNorms\.csv",
        "time of every step",
        {"time": "time"},
        TIMES,
    ),
    Table(
        "convergence_listing",
        r"ListingConvergence\.dat",
        "time of every step",
        {"time": "time"},
        TIMES,
        heading=False,
    ),
    Table(
        "stiffness",
        r"stiffness\.csv",
        "stiffness of the sarcomere; no row in a run",
        {"time": "time", "stiffness": "pN/nm"},
    ),
    Table("actin_forces", r"actinForces\.csv", "stays empty in a run", {"value": ""}),
    Table(
        "actin_force_listing",
        r"ActinForceListing\.dat",
        "forces at the ends of the thin filaments at step 70000",
        {"entry": "", "force": "pN"},
        VALUES,
        heading=False,
    ),
)

# Files that every run writes from its first step on, with what is lost without them.
NEEDED = {
    "result.csv": "force, length and bonds",
    "cb_states_file.csv": "state populations of bound heads",
    "Myosin_head_states.csv": "state populations of all heads",
    "Kacenja.csv": "attachments and detachments",
    "TaveloOutput.lst": "the parameters",
}
BY_KEY = {table.key: table for table in TABLES}

# Kinetic states by the model's name in the listing; others are numbered.
STATE_NAMES = {
    "Huxley": ("detached", "attached"),
    "Duke": ("detached", "bound", "after the stroke"),
    "Rombel": ("detached", "bound", "after the stroke"),
    "Vorn": ("detached", "bound", "after the stroke", "ADP released", "detached", "parked"),
    "BrekAtpaseFiber": (
        "detached",
        "bound",
        "after the stroke",
        "after the ADP step",
        "bound",
        "bound",
        "bound",
        "detached",
    ),
    "Tolen9": tuple(f"state {number}" for number in range(1, 10)),
}
