#!/usr/bin/env python3
"""Checks that includes go the way that docs/architecture.md draws.

The two drawings there are blocks that begin with the line "Includes of Db:" and "Includes of tools/quillet:". Each
line of a block names rooms and single files, without their endings; a file may include those of its own line and of the
lines above. The longest name that fits a file counts. Of Quillet/ itself the drawing leaves out the prefix.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# The one place that knows both ends: how lower classes notify the database.
BOTH_ENDS = {"Db/Quillet/registry/Upcalls.cpp"}


def drawing(text, title):
    """The names of the block and the number of the line of each."""
    block = re.search(rf"^    {re.escape(title)}\n((?:    .*\n)+)", text, re.M)
    if block is None:
        sys.exit(f"docs/architecture.md: no drawing '{title}'")
    order = {}
    for number, line in enumerate(block.group(1).splitlines()):
        for name in line.split():
            order[name] = number
    return order


def place(order, file):
    """The line of a file, by its path below the root of the drawing."""
    stem = re.sub(r"\.\w+$", "", file)
    while stem not in order:
        stem, slash, _ = stem.rpartition("/")
        if not slash:
            return order.get(".")
    return order[stem]


def includes(path):
    found = re.findall(r'^\s*#\s*include (?:"([^"]+)"|<(Quillet/[^>]+)>)', path.read_text(encoding="utf-8"), re.M)
    return [quoted or bracketed for quoted, bracketed in found]


def check(folder, prefix, order):
    faults = []
    for path in sorted((ROOT / folder).rglob("*")):
        name = path.relative_to(ROOT).as_posix()
        if path.suffix not in (".h", ".cpp", ".c") or name in BOTH_ENDS:
            continue
        own = place(order, path.relative_to(ROOT / folder).as_posix())
        if own is None:
            faults.append(f"{name}: is not in docs/architecture.md")
            continue
        for included in includes(path):
            if not (ROOT / folder / included.removeprefix(prefix)).is_file():
                if prefix and not included.startswith(prefix):
                    faults.append(f'{name}: "{included}" does not begin with {prefix}')
                continue
            other = place(order, included.removeprefix(prefix))
            if other is None or other > own:
                faults.append(f'{name}: "{included}" comes after it in docs/architecture.md')
    return faults


def main():
    text = (ROOT / "docs/architecture.md").read_text(encoding="utf-8")
    faults = check("Db/Quillet", "Quillet/", drawing(text, "Includes of Db:"))
    faults += check("tools/quillet", "", drawing(text, "Includes of tools/quillet:"))
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
