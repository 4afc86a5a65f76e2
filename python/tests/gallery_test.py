"""Would catch sentences cut at initials or sources, and links that lead nowhere from the page."""

import re
from importlib.machinery import SourceFileLoader
from pathlib import Path
from types import ModuleType

ROOT = Path(__file__).resolve().parents[2]
SCRIPT = str(ROOT / "tools" / "make_gallery")
make_gallery = ModuleType("make_gallery")
make_gallery.__file__ = SCRIPT
SourceFileLoader("make_gallery", SCRIPT).exec_module(make_gallery)


def test_the_first_two_sentences() -> None:
    text = (
        "# Title\n\nAs A. F. Huxley has it (Prog. Biophys. 7, 1957), heads pull. See\n"
        "[units](../../docs/theory/units.md#x). A third one.\n\n| a | b |\n"
    )
    found = make_gallery.first_sentences(text, ROOT / "examples" / "isometric")
    assert found.split("\n") == [
        "As A. F. Huxley has it (Prog. Biophys. 7, 1957), heads pull. See [units](theory/units.md#x)."
    ]


def test_every_example_has_an_entry_whose_links_lead_somewhere() -> None:
    folders = make_gallery.examples()
    assert {"isometric", "rigid"} <= {folder.name for folder in folders}
    for folder in folders:
        for link in re.findall(r"\]\((?!http)([^)#]+)", make_gallery.entry(folder)):
            assert (ROOT / "docs" / link).exists(), (folder, link)
