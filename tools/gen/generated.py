"""The files that the generators of this folder make, and what all of them do with them."""

import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]


def bring_up_to_date(outputs):
    """Writes what differs; under --check it writes nothing and fails where something does.

    outputs: the text of each file, by its path from the root of the tree.
    """
    stale = []
    for name, text in outputs.items():
        path = ROOT / name
        if path.exists() and path.read_text() == text:
            continue
        stale.append(name)
        if "--check" not in sys.argv:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
    if stale and "--check" in sys.argv:
        generator = pathlib.Path(sys.argv[0]).name
        sys.exit(f"stale, run tools/gen/{generator}: {', '.join(stale)}")
