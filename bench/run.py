#!/usr/bin/env python3
"""Runs the benchmarks and prints what each costs in comparison with its peer.

Each side of a comparison runs in a process of its own, five times in turn with its peer. A figure is the median of the
five. Processor time counts, beside which the table shows the time that passed; where both sides wait for the disk, the
larger ratio counts. Whatever a run needs is prepared before it is measured. Where both sides give a hash of what they
found, the hashes must agree.

Called by run.sh, which builds the programs and names the folder for the catalogs (about 3 GB).
"""
import csv
import json
import os
import pathlib
import resource
import statistics
import subprocess
import sys
import time

ROUNDS = 5
ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build/release/bin"
FOLDER = pathlib.Path(os.environ["QUILLET_BENCH_DIR"])
MEGA = 1 << 20

missed = 0


def fail(text):
    sys.exit(f"run.sh: {text}")


def run_once(program, pattern):
    """The benchmarks of a program whose names match, by their names: figures of one run in one process."""
    result = subprocess.run([BIN / program, f"--benchmark_filter={pattern}", "--benchmark_format=json"],
                            capture_output=True, text=True, check=False)
    if result.returncode != 0:
        fail(f"{program} {pattern} failed: {result.stderr[-500:]}")
    figures = {}
    for entry in json.loads(result.stdout)["benchmarks"]:
        name = entry["name"].replace("/iterations:1", "").replace("/manual_time", "")
        figures[name] = dict(entry, wall=entry["real_time"] / 1e3, cpu=entry["cpu_seconds"])
    return figures


def medians(runs):
    """The median of each figure, of a list of what run_once gives."""
    return {name: {key: statistics.median(run[name][key] for run in runs)
                   for key, value in runs[0][name].items() if isinstance(value, (int, float))}
            for name in runs[0]}


def in_turn(sides, rounds=ROUNDS):
    """Runs (program, pattern) of each side in turn; all their figures by name."""
    runs = [[] for _ in sides]
    for _ in range(rounds):
        for side, (program, pattern) in enumerate(sides):
            runs[side].append(run_once(program, pattern))
    figures = {}
    for side in runs:
        figures.update(medians(side))
    return figures


def heading(text):
    print(f"\n{text}\n{'':46} {'ours':>10} {'peer':>10}   {'cpu':>6} {'wall':>6} {'bound':>7}", flush=True)


def verdict(kept):
    global missed
    missed += 0 if kept else 1
    return "kept" if kept else "MISSED"


def compare(what, ours, peer, bound, waits=False):
    """A line of two times and their ratio; without a bound there is no verdict."""
    for key in ("rows", "hash", "numbers", "texts"):
        if key in ours and key in peer and ours[key] != peer[key] and abs(ours[key] - peer[key]) > 1e-9 * abs(peer[key]):
            fail(f"{what}: the two sides found different {key}: {ours[key]}, {peer[key]}")
    cpu = ours["cpu"] / max(peer["cpu"], 1e-9)
    wall = ours["wall"] / max(peer["wall"], 1e-9)
    judged = "" if bound is None else verdict((max(cpu, wall) if waits else cpu) <= bound)
    shown = "" if bound is None else f"{bound:g}"
    print(f"{what:46} {ours['cpu'] * 1e3:7.0f} ms {peer['cpu'] * 1e3:7.0f} ms   {cpu:6.2f} {wall:6.2f} {shown:>7} {judged}",
          flush=True)


def figure(what, value, unit, bound, note=""):
    judged = verdict(value <= bound)
    print(f"{what:46} {value:10.2f} {unit:34} {bound:g} {judged} {note}", flush=True)


def catalogs():
    heading("Catalogs: 177 MB of plain cells, and 215 MB of awkward ones; pugixml on the same file")
    for cells, factor in (("plain", 1), ("awkward", 2)):
        names = ["PugixmlParse", "PugixmlParseAndSum", "OpenAndSum", "OpenAndReadCells", "PugixmlSave", "Save"]
        f = in_turn([("catalog_bench", f"^{name}/{cells}") for name in names])
        get = lambda name: f[f"{name}/{cells}"]
        compare(f"open, sum all by columns / parse and sum, {cells}", get("OpenAndSum"), get("PugixmlParseAndSum"),
                0.5 * factor)
        compare(f"open, read all cells / parse, {cells}", get("OpenAndReadCells"), get("PugixmlParse"), 1.8 * factor)
        figure(f"peak memory of the first / parse, {cells}",
               get("OpenAndSum")["peak_bytes"] / get("PugixmlParse")["peak_bytes"], "times", 0.3 * factor)
        compare(f"save / save, both synced, {cells}", get("Save"), get("PugixmlSave"), 0.9 * factor, waits=True)
    names = ["PugixmlParse/plain", "SearchMissingPath", "ReachLastTable", "Destroy", "OpenOdd", "FirstTable/long",
             "FirstTable/short", "NumericCell"]
    f = in_turn([("catalog_bench", f"^{name}") for name in names])
    parse = f["PugixmlParse/plain"]
    compare("search for an absent path / parse", f["SearchMissingPath"], parse, 0.15)
    compare("last table of a sequential file / parse", f["ReachLastTable"], parse, 0.6)
    compare("destroy / parse", f["Destroy"], parse, 0.03)
    compare("first table, long file / short file", f["FirstTable/long"], f["FirstTable/short"], None)
    figure("first table's heap, long file / short file",
           f["FirstTable/long"]["heap_bytes"] / f["FirstTable/short"]["heap_bytes"], "times", 1.1)
    # What the whole document and an object for each row took.
    figure("peak memory where the reader gives up / parse", f["OpenOdd"]["peak_bytes"] / parse["peak_bytes"], "times", 2.6)
    figure("numeric cell", f["NumericCell"]["bytes_per_cell"], "bytes", 10)
    figure("numeric cell after a deletion", f["NumericCell"]["bytes_after_deletion"], "bytes", 10)


QUERIES = [
    # What, name, the bound where cells are read, where columns are.
    ("a number is large, half the rows", "NumberIs", 1.5, 0.1),
    ("a number is small, 1 row of 100", "NumberIsRarely", 1.5, 0.1),
    ("a text is another", "TextIs", None, 0.25),
    ("a text comes after another", "TextIsAfter", None, 1.0),
    ("a number and a text", "NumberAndTextAre", None, None),
    ("a number, rows of the table", "AllFields", None, None),
    ("order by a number", "OrderByNumber", None, 0.25),
    ("order by a number, ten rows alike", "OrderByNumberWithTies", None, 0.25),
    ("order by a text", "OrderByText", None, 0.5),
    ("distinct of 6 numbers", "DistinctOf6Numbers", None, 0.15),
    ("distinct of 20,000 numbers", "DistinctOf20000Numbers", None, 0.15),
    ("distinct of 1,000,000 numbers", "DistinctOfAllNumbers", None, 0.15),
    ("distinct of 6 texts", "DistinctOf6Texts", None, 0.5),
    ("distinct of 20,000 texts", "DistinctOf20000Texts", None, 0.5),
    ("distinct of 1,000,000 texts", "DistinctOfAllTexts", None, 0.5),
    ("distinct of 60,000 pairs of texts", "DistinctOfPairs", None, None),
]


def queries():
    heading("Queries: a table of 1,000,000 rows; SQLite in memory")
    f = in_turn([("query_bench", f"^{side}/") for side in ("Sqlite", "Columns", "Cells", "Made")])
    for what, name, cells_bound, columns_bound in QUERIES:
        peer = f[f"Sqlite/{name}"]
        compare(f"{what}: by columns", f[f"Columns/{name}"], peer, columns_bound)
        compare("    by cells", f[f"Cells/{name}"], peer, cells_bound)
        compare("    by cells, each row has an object", f[f"Made/{name}"], peer, None)
    for side, what in (("Cells", "no row has an object"), ("Made", "each row has one")):
        after, before = f[f"{side}/AfterAChange"], f[f"{side}/WithoutAChange"]
        bound = max(1.2, (before["cpu"] + 0.002) / before["cpu"])
        compare(f"first query after a change, {what}", after, before, round(bound, 2) if side == "Cells" else None)
    figure("rows of the table as an answer, each", f["Columns/AllFieldsHeap"]["bytes_per_row"], "bytes", 8.1)


def cursors():
    heading("Cursors: the same table; SQLite in memory")
    f = in_turn([("cursor_bench", f"^{side}/") for side in ("Sqlite", "Unmade", "Made")])
    for what, name, bound in (("index over a number", "IndexByDouble", 0.2), ("index over a text", "IndexByText", None),
                              ("find that compares all numbers", "FindNumber", 0.2),
                              ("find that compares all texts", "FindText", None)):
        compare(what, f[f"Unmade/{name}"], f[f"Sqlite/{name}"], bound)
        compare("    each row has an object", f[f"Made/{name}"], f[f"Sqlite/{name}"], None)


def command(arguments, **options):
    """The figures of a whole command."""
    start = time.monotonic()
    process = subprocess.Popen([str(argument) for argument in arguments], stdout=options.get("stdout", subprocess.DEVNULL),
                               stdin=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        fail(f"{arguments[0]} {arguments[1]} failed")
    return {"wall": time.monotonic() - start, "cpu": usage.ru_utime + usage.ru_stime, "peak": usage.ru_maxrss * 1024}


def commands_in_turn(ours, peer, before=lambda: None):
    runs = ([], [])
    for _ in range(ROUNDS):
        for side, run in enumerate((ours, peer)):
            before()
            runs[side].append(run())
    return [{key: statistics.median(run[key] for run in side) for key in side[0]} for side in runs]


def to_file(path, arguments):
    with open(path, "wb") as out:
        figures = command(arguments, stdout=out)
        start, times = time.monotonic(), resource.getrusage(resource.RUSAGE_SELF)
        os.fsync(out.fileno())
        after = resource.getrusage(resource.RUSAGE_SELF)
    figures["wall"] += time.monotonic() - start
    figures["cpu"] += after.ru_stime - times.ru_stime
    return figures


def commands():
    heading("Whole commands: a table of 1,000,000 rows by 12 fields; the program sqlite3")
    quillet = BIN / "quillet"
    catalog, data, base = FOLDER / "rows-1000000.xml", FOLDER / "rows.csv", FOLDER / "rows.sqlite"
    run_once("catalog_bench", "^OpenRows/1000000$|^OpenRows/1000000/")
    command([quillet, "export", catalog, "T0", data, "--replace"])
    with open(data, encoding="utf-8") as lines:
        fields = next(csv.reader(lines))
    types = {"name": "text", "norm": "text", "id": "integer", "class": "integer"}
    create = "create table t (" + ", ".join(f'"{field}" {types.get(field, "real")}' for field in fields) + ")"
    load = [create, ".mode csv", f".import --skip 1 {data} t"]
    select = "select name, h, A from {} where h > 9900"

    def sqlite(file, steps):
        return ["sqlite3", file] + steps

    ours, peer = commands_in_turn(lambda: command([quillet, "query", catalog, select.format("T0"), "--format", "csv"]),
                                  lambda: command(sqlite(":memory:", load + [select.format("t")])))
    compare("query / read the CSV, then query", ours, peer, 0.2)
    figure("    its peak memory", ours["peak"] / MEGA, "MB", 300)

    imported = FOLDER / "imported.xml"

    def clean():
        for path in (imported, base):
            path.unlink(missing_ok=True)
        command([quillet, "new", imported])

    ours, peer = commands_in_turn(lambda: command([quillet, "import", imported, "T", data]),
                                  lambda: command(sqlite(base, load)), clean)
    compare("import / .import, both synced", ours, peer, 0.7)
    command(sqlite(base, load) if not base.exists() else ["true", ""])
    out = FOLDER / "exported.csv"
    ours, peer = commands_in_turn(lambda: command([quillet, "export", catalog, "T0", out, "--replace"]),
                                  lambda: to_file(FOLDER / "peer.csv", sqlite(base, [".mode csv", ".headers on", "select * from t"])))
    compare("export to CSV / select to CSV", ours, peer, 0.7)
    info = command([quillet, "info", catalog])
    figure("info / query", info["cpu"] / max(command([quillet, "query", catalog, select.format("T0")])["cpu"], 1e-9), "times", 1.0)
    figure("    its peak memory", info["peak"] / MEGA, "MB", 50)


def rows():
    counts = (1000, 10000, 100000, 1000000, 4000000)
    print("\nGrowth with the rows of a table of 12 fields: microseconds and bytes for each row\n"
          f"{'':46}" + "".join(f"{count:>11,}" for count in counts))
    for what, name in (("open whole", "OpenRows"), ("query with order", "QueryRows"), ("save", "SaveRows")):
        f = in_turn([("catalog_bench", f"^{name}/{count}/") for count in counts], rounds=3)
        found = {int(key.split("/")[1]): value for key, value in f.items()}
        print(f"{what:46}" + "".join(f"{found[count]['cpu'] / count * 1e6:11.3f}" for count in counts), flush=True)
        if name == "OpenRows":
            print(f"{'    peak memory':46}" + "".join(f"{found[count]['peak_bytes'] / count:11.0f}" for count in counts))


def growth():
    print(f"\nGrowth: what eight times as many cost in comparison\n{'':46} {'ratio':>10} {'(8 is linear, 64 quadratic)':34} bound")
    for program in ("query_growth_bench", "model_growth_bench"):
        f = in_turn([(program, ".")], rounds=3)
        for name in dict.fromkeys(key.split("/")[0] for key in f):
            figure(name, f[f"{name}/many"]["cpu"] / max(f[f"{name}/few"]["cpu"], 1e-9), "times", 24)


def access():
    if not os.path.exists(os.environ.get("QUILLET_BENCH_ACCESS_FILE", "")):
        print("\nNo Access file: its reading is not measured")
        return
    heading("Access files: bare calls to the driver")
    run_once("access_bench", "^AccessAgreement")
    f = in_turn([("access_bench", "^AccessQuillet"), ("access_bench", "^AccessBare")])
    compare("read a file", f["AccessQuillet"], f["AccessBare"], 1.5)


SECTIONS = {"catalogs": catalogs, "queries": queries, "cursors": cursors, "commands": commands, "rows": rows,
            "growth": growth, "access": access}

for section in sys.argv[1:] or SECTIONS:
    if section not in SECTIONS:
        fail(f"unknown section '{section}': {', '.join(SECTIONS)}")
    SECTIONS[section]()
print(f"\n{missed} bounds missed" if missed else "\nAll bounds kept")
