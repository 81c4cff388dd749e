#!/usr/bin/env python3
"""Writes Db/Quillet/platform/windows/CaseTable.inc from the Unicode Character Database.

    scripts/make-case-table.py UnicodeData.txt CaseFolding.txt > Db/Quillet/platform/windows/CaseTable.inc

The two files are those of Debian's package unicode-data; their formats are described in Unicode's Standard Annex 44.
"""
import sys


def simple_mappings(unicode_data):
    """The simple lower and upper case of every code point that has one."""
    lower, upper = {}, {}
    for line in unicode_data:
        values = line.rstrip("\n").split(";")
        code = int(values[0], 16)
        if values[12]:
            upper[code] = int(values[12], 16)
        if values[13]:
            lower[code] = int(values[13], 16)
    return lower, upper


def simple_foldings(case_folding):
    """The common (C) and simple (S) foldings."""
    folding = {}
    for line in case_folding:
        values = [value.strip() for value in line.split("#")[0].split(";")]
        if len(values) > 2 and values[1] in ("C", "S"):
            folding[int(values[0], 16)] = int(values[2], 16)
    return folding


def ranges(mapping):
    """Runs of code points, every one or every second, that are mapped by the same distance."""
    runs = []
    for code in sorted(mapping):
        distance = mapping[code] - code
        if runs:
            first, last, step, run_distance = runs[-1]
            gap = code - last
            if run_distance == distance and (gap == step or (first == last and gap <= 2)):
                runs[-1] = (first, code, gap, distance)
                continue
        runs.append((code, code, 1, distance))
    return runs


def main():
    with open(sys.argv[1], encoding="utf-8") as unicode_data:
        lower, upper = simple_mappings(unicode_data)
    with open(sys.argv[2], encoding="utf-8") as case_folding:
        version = case_folding.readline().split("-")[1].removesuffix(".txt\n")
        case_folding.seek(0)
        folding = simple_foldings(case_folding)
    print(f"// Made by scripts/make-case-table.py from the Unicode Character Database, version {version}.")
    for name, mapping in (("ToLower", lower), ("ToUpper", upper), ("ToFolded", folding)):
        print(f"constexpr CaseRange {name}[] = {{")
        for first, last, step, distance in ranges(mapping):
            print(f"    {{0x{first:X}, 0x{last:X}, {step}, {distance}}},")
        print("};")


main()
