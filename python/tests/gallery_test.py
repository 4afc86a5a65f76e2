"""Would catch sentences cut at initials or sources, and links that lead nowhere from the page."""

import importlib.util
import re
from importlib.machinery import SourceFileLoader
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
LOADER = SourceFileLoader("make_gallery", str(ROOT / "tools" / "make_gallery"))
SPEC = importlib.util.spec_from_loader("make_gallery", LOADER)
assert SPEC
make_gallery = importlib.util.module_from_spec(SPEC)
LOADER.exec_module(make_gallery)


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
