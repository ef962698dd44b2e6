#!/usr/bin/env python3
"""Gives the command small inputs that are made to break a reader, and looks whether each is taken or refused.

usage: try_inputs.py --program build/release/tarn [--seconds 10] [--gigabytes 2] [--cpu] [--only TEXT] [--every N] [--list]

Tables, compressed tables, descriptors, plans, requests, studies, results, documents and words of the command line: made
by hand, and good ones with one value after another in the place of what belongs there, cut short, with a part missing,
twice or with other bytes. A run ends well if it has status 0, or status 1 or 2 with few lines, each in the words of the
command and in UTF-8, or status 3 where a result is compared; if it takes no more than --seconds and --gigabytes; if the file of
--out is the old one or a whole new one; and if no other file is there. --every takes each Nth input alone. Prints a line
for each input that does not end well.
"""

import argparse
import copy
import gzip
import json
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

import try_shapes

SOURCES = pathlib.Path(__file__).resolve().parents[2]
OLD = b"what was there before\n"
MOST_LINES = 102  # a hundred of one kind, how many more there are, and why the run failed
LONGEST_LINE = 8100
IS_OTHER = 3  # the status of a result that differs from the one that it is compared with
# What a library says of itself, and no sentence of the command does.
FOREIGN_WORDS = re.compile(r"std::|basic_string|bad_alloc|vector|what\(\)|json\.exception|terminate|nullptr|\bstod?\b|errno")


# ---- What stands in the place of a value ----

TEXTS = ["", " ", "\0", "\ufeff", "\u202e", "𝒳" * 50, "n" * 100_000, "&lt;<>\"'", "%s%n", "../../etc/passwd", "-1", "nan",
         "1e999", "]]>", "\\u0000", "\r\n", "__proto__", "=1+1"]
VALUES = [None, True, [], {}, [[]], [None], {"": ""}, -1, 0, 0.5, 1e308, -0.0, 2**31, 2**63, 2**64, 10**400, "", "\0", "x",
          "n" * 100_000, ["x"] * 1000, [[[[[[[[[[1]]]]]]]]]]]


def small_table(folder):
    path = pathlib.Path(folder, "table.csv")
    path.write_text("x,y,z,g,w\n" + "".join(f"{i},{i * 7 % 20},{i * 3 % 11},{'abc'[i % 3]},{i % 4}\n" for i in range(40)))


class Input:
    """A name, what makes files in a folder, and the command with {folder} for it."""

    def __init__(self, name, files, command):
        self.name = name
        self.files = files
        self.command = command


# ---- Bytes ----

def cut_short(content, pieces):
    for piece in range(pieces):
        yield f"cut at {piece}/{pieces}", content[:len(content) * piece // pieces]


def damaged(content, count, seed):
    """One byte set, taken out or put in, at places of the dice."""
    dice = random.Random(seed)
    for number in range(count):
        place = dice.randrange(len(content))
        byte = bytes([dice.choice([0, 10, 13, 34, 39, 44, 60, 91, 92, 123, 127, 128, 0xC0, 0xED, 0xFF, dice.randrange(256)])])
        kind = dice.choice(["set", "taken out", "put in"])
        middle = {"set": byte + content[place + 1:place + 2], "taken out": b"",
                  "put in": byte + content[place:place + 1]}[kind]
        after = place + (2 if kind == "set" else 1)
        yield f"byte {place} {kind} ({number})", content[:place] + middle + content[after:]


def framed(content):
    """What may stand around a text, and what it may be written in."""
    text = content.decode()
    yield "empty", b""
    yield "a blank", b" "
    yield "a mark of UTF-8 in front", b"\xef\xbb\xbf" + content
    yield "two marks in front", b"\xef\xbb\xbf" * 2 + content
    yield "UTF-16 without a mark", text.encode("utf-16le")
    yield "UTF-16 with a mark", text.encode("utf-16")
    yield "UTF-16 with an odd byte", text.encode("utf-16") + b"x"
    yield "UTF-32", text.encode("utf-32")
    yield "half of a pair in UTF-16", b"\xff\xfe" + "x,y\n".encode("utf-16le") + b"\x00\xd8" + "\n".encode("utf-16le")
    yield "a half pair in UTF-8", content + b"\xed\xa0\x80"
    yield "too long a form of a blank", content + b"\xc0\xa0"
    yield "bytes of no encoding", bytes(range(256)) * 40
    yield "twice", content * 2
    yield "a zero at its end", content + b"\0"
    yield "zeros alone", bytes(10_000)
    yield "a program", b"\x7fELF" + bytes(range(256)) * 10
    yield "an archive", b"PK\3\4" + content


# ---- Tables ----

TABLES = {
    "a header alone": "x,y", "a header with a line break": "x,y\n", "one cell": "1", "no name": ",\n1,2\n",
    "the same name twice": "x,x\n1,2\n3,4\n", "names that differ in blanks": "x, x\n1,2\n", "more cells than names": "x\n1,2,3\n",
    "fewer cells than names": "x,y,z\n1\n2\n", "rows of all widths": "x,y\n1\n1,2\n1,2,3\n", "an open quote": 'x,y\n"1,2\n3,4\n',
    "a quote within a cell": 'x,y\n1"2,3\n', "text behind a quote": 'x,y\n"1"2,3\n', "quotes in a row": 'x\n""""""""\n',
    "a quoted name with line breaks": '"x\n\n\ny",z\n1,2\n', "line breaks of all kinds": "x,y\r1,2\r\n3,4\n\r5,6\n",
    "no number is finite": "x\ninf\n-inf\nnan\n1e999\n", "numbers at the ends": "x\n1e308\n-1e308\n5e-324\n1.7976931348623157e308\n",
    "numbers beyond the ends": "x\n1e309\n-1e400\n1\n2\n", "numbers of many digits": "x\n" + "1" * 5000 + "\n0." + "3" * 5000 + "\n",
    "odd numbers": "x\n+1\n--1\n1.\n.5\n1e\n0x1F\n1_000\n1,5\n", "signs alone": "x\n-\n+\n.\ne\n",
    "one value": "x\n1\n", "equal values": "x\n" + "7\n" * 50, "two values far apart": "x\n-1e308\n1e308\n",
    "steps below the last digit": "x\n" + "".join(f"{1 + i * 2**-52!r}\n" for i in range(20)), "missing alone": "x,y\nNA,\n,NA\n",
    "many delimiters": "x;y,z\tw|v\n1;2,3\t4|5\n", "a name of a hundred thousand letters": "n" * 100_000 + "\n1\n",
    "a cell of a hundred thousand letters": "x\n" + "c" * 100_000 + "\n", "names of formulas": "=1+1,@x,+y,-z\n1,2,3,4\n",
    "names of markup": "<b>,</b>&amp;,\"]]>\",'\n1,2,3,4\n", "names in two directions": "\u202eabc,אבג\n1,2\n3,4\n",
    "names of control characters": "\x01,\x02\x1b[31m\n1,2\n3,4\n", "names of combining marks": "e" + "\u0301" * 1000 + ",y\n1,2\n",
    "dates": "d\n2020-02-30\n0000-00-00\n9999-99-99\n", "times": "t\n25:61:61\n-00:00\n", "currency": "x\n$1\n€2\n1$\n$\n",
    "percents": "x\n1%\n%\n-5%\n101%\n", "aligned text": "a   b\n1     2\n 3 4\n", "a line of dashes": "x,y\n---,---\n1,2\n",
    "weights that are none": "x,w\n1,-1\n2,0\n3,1e300\n4,nan\n5,0.4\n", "three thousand fields": ",".join(map(str, range(3000))) + "\n",
    "a thousand categories": "x\n" + "".join(f"k{i}\n" for i in range(1000)), "comments": "# x\n# y\nx,y\n1,2\n# end\n",
    "a separator line": "sep=;\nx;y\n1;2\n", "an unknown separator line": "sep=\nx;y\n1;2\n", "tabs and blanks": "x\t y\n1\t \n\t2\n",
}


def tables():
    commands = {"a look": ["look", "{folder}/in.csv"], "each by itself": ["analyze", "{folder}/in.csv", "--one-sample", "all"],
                "all related": ["analyze", "{folder}/in.csv", "--related", "all", "--missing", "listwise"]}
    for name, text in TABLES.items():
        for what, command in commands.items():
            yield Input(f"table: {name}, {what}", {"in.csv": text.encode()}, command)
    good = SOURCES.joinpath("examples/sleep_clinic.csv").read_bytes()
    analyze = ["analyze", "{folder}/in.csv", "hours_after ~ arm", "--format", "json"]
    described = [*analyze, "--fields", str(SOURCES / "examples/sleep_clinic.fields.json")]
    for way, content in [*framed(good), *cut_short(good, 40), *damaged(good, 60, 1)]:
        yield Input(f"table: {way}", {"in.csv": content}, analyze)
        yield Input(f"table: {way}, described", {"in.csv": content}, described)
    packed = gzip.compress(good, mtime=0)
    for way, content in [*cut_short(packed, 20), *damaged(packed, 60, 2), ("twice", packed * 2),
                         ("something behind it", packed + b"x" * 100), ("within itself", gzip.compress(packed, mtime=0))]:
        yield Input(f"compressed: {way}", {"in.csv.gz": content}, ["look", "{folder}/in.csv.gz"])


# ---- JSON ----

def places_in(value, place=()):
    yield place
    if isinstance(value, (dict, list)):
        for key in (value if isinstance(value, dict) else range(len(value))):
            yield from places_in(value[key], (*place, key))


def changed(document, place, change):
    """A copy in which `change` was made to what holds the place and its key."""
    whole = {"": copy.deepcopy(document)}
    holder = whole
    path = ("", *place)
    for key in path[:-1]:
        holder = holder[key]
    change(holder, path[-1])
    return whole.get("")


def json_changes(document, most):
    """One change of one value after another, so far apart that there are `most` of them."""
    changes = []
    for place in places_in(document):
        where = "/".join(map(str, place)) or "all"
        for value in VALUES:
            changes.append((f"{where} is {json.dumps(value)[:30]}", place, lambda holder, key, v=value: holder.__setitem__(key, v)))
        if place:
            changes.append((f"{where} is gone", place, lambda holder, key: holder.pop(key)))
        if place and isinstance(place[-1], str):
            changes.append((f"{where} is named otherwise", place, lambda holder, key: holder.__setitem__(key + "s", holder.pop(key))))
    dice = random.Random(len(changes))
    for name, place, change in dice.sample(changes, min(most, len(changes))):
        yield name, json.dumps(changed(document, place, change)).encode()


def json_texts(content):
    text = content.decode()
    yield "a key twice", text.replace("{", '{"tests": 1, "tests": 2, ', 1).encode()
    yield "a comma at its end", re.sub(r"([}\]])\s*$", r",\1", text).encode()
    yield "a comment", ("// why\n" + text).encode()
    yield "single quotes", text.replace('"', "'").encode()
    yield "no number", re.sub(r": [\d.]+", ": NaN", text + ' {"x": 1}').encode()
    yield "a number without an end", re.sub(r": [\d.]+", ": " + "9" * 100_000, text, count=1).encode()
    yield "an exponent without an end", re.sub(r": [\d.]+", ": 1e" + "9" * 1000, text, count=1).encode()
    yield "half of a pair", text.replace('"', '"\\ud800', 1).encode()
    yield "an unknown escape", text.replace('"', '"\\x', 1).encode()
    yield "something behind it", (text + "x").encode()
    yield "brackets alone", b"[" * 5000
    yield "braces alone", b'{"a":' * 5000
    yield "a hundred thousand keys", ("{" + ",".join(f'"k{i}":1' for i in range(100_000)) + "}").encode()


def json_file(kind, content, command, most, files=None):
    ways = [*framed(content), *cut_short(content, 20), *damaged(content, 25, kind), *json_texts(content),
            *json_changes(json.loads(content), most)]
    for way, changed_content in ways:
        yield Input(f"{kind}: {way}", {**(files or {}), "in.json": changed_content}, command)


def json_files():
    case = SOURCES / "tests/cases"
    table = str(SOURCES / "examples/sleep_clinic.csv")
    yield from json_file("fields", SOURCES.joinpath("examples/sleep_clinic.fields.json").read_bytes(),
                         ["analyze", table, "hours_after ~ arm", "--fields", "{folder}/in.json"], 120)
    plan = {"tests": [{"mannWhitney": {"dependentVarName": "x", "groupVarName": "g"}},
                      {"wilcoxon": {"variableName": ["x", "y"]}},
                      {"friedman": {"variableName": ["x", "y", "z"], "typeOfMultipleComparison": "stepWise"}}]}
    yield from json_file("plan", json.dumps(plan).encode(),
                         ["run", "--data", "{folder}/table.csv", "--plan", "{folder}/in.json", "--out", "{folder}/out.xml"], 120)
    for name in ("named-sleep", "kgroups-plants-pairwise"):
        kind = "settings" if case.joinpath(name, "settings.json").exists() else "plan"
        data = case / name / "data.csv"
        fields = case / name / "fields.json"
        command = ["run", "--data", str(data), f"--{kind}", "{folder}/in.json", "--out", "{folder}/out.xml"]
        if fields.exists():
            command += ["--fields", str(fields)]
        yield from json_file(f"{kind} of {name}", case.joinpath(name, f"{kind}.json").read_bytes(), command, 120)


# ---- What the command wrote itself ----

def written(program):
    """A study, a result as JSON and a document, as the program writes them."""
    with tempfile.TemporaryDirectory() as folder:
        data = str(SOURCES / "examples/sleep_clinic.csv")
        shared = [str(program), "analyze", data, "hours_after ~ arm", "--compare", "pairwise"]
        files = {"study": ["--save", f"{folder}/study", "--quiet"], "result": ["--format", "json"],
                 "document": ["--format", "xml"]}
        for name, more in files.items():
            done = subprocess.run([*shared, *more], capture_output=True, check=True)
            if name != "study":
                pathlib.Path(folder, name).write_bytes(done.stdout)
        return {name: pathlib.Path(folder, name).read_bytes() for name in files}


def xml_changes(content):
    text = content.decode()
    first = text.index("<", text.index("?>") + 2 if text.startswith("<?xml") else 0)
    declared = "<!DOCTYPE x [%s]>"
    bomb = declared % ('<!ENTITY a "aaaaaaaaaa">' + "".join(
        f'<!ENTITY {b} "{f"&{a};" * 10}">' for a, b in zip("abcdefgh", "bcdefghi")))
    for name, put in (("entities within entities", bomb), ("a file as an entity", declared % '<!ENTITY a SYSTEM "/etc/passwd">'),
                      ("a foreign kind of document", '<!DOCTYPE x SYSTEM "http://127.0.0.1:9/x.dtd">'),
                      ("a comment", "<!-- -->"), ("an open comment", "<!-- "), ("an instruction", "<?php exit ?>")):
        yield name, (text[:first] + put + text[first:]).replace("Mann", "&i;", 1).encode()
    yield "a root around it", ("<x>" + text[first:] + "</x>").encode()
    yield "another encoding", (b'<?xml version="1.0" encoding="UTF-16"?>' + text[first:].encode())
    yield "an unknown encoding", (b'<?xml version="1.0" encoding="x-none"?>' + text[first:].encode())
    tags = [match for match in re.finditer(r"<(\w+)[^>]*?(/?)>", text[first:])]
    attributes = [match for match in re.finditer(r'\s([\w:]+)="([^"]*)"', text[first:])]
    numbers = [match for match in re.finditer(r">([-\d.eE+]+)<", text[first:])]
    dice = random.Random(7)
    for match in dice.sample(tags, min(60, len(tags))):
        a, b = first + match.start(), first + match.end()
        yield f"tag {match[1]} at {a} is gone", (text[:a] + text[b:]).encode()
        yield f"tag {match[1]} at {a} twice", (text[:b] + text[a:b] + text[b:]).encode()
    for match in dice.sample(attributes, min(60, len(attributes))):
        a, b = first + match.start(2), first + match.end(2)
        value = dice.choice(TEXTS).replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
        yield f"attribute {match[1]} at {a} is {value[:20]!r}", (text[:a] + value + text[b:]).encode()
        yield f"attribute {match[1]} at {a} is gone", (text[:a - len(match[1]) - 3] + text[b + 1:]).encode()
    for match in dice.sample(numbers, min(30, len(numbers))):
        a, b = first + match.start(1), first + match.end(1)
        yield f"number at {a}", (text[:a] + dice.choice(["nan", "1e999", "-", "", "x", "9" * 400]) + text[b:]).encode()


def own_files(program):
    own = written(program)
    table = str(SOURCES / "examples/sleep_clinic.csv")
    yield from json_file("study", own["study"], ["rerun", "{folder}/in.json", "--data", table], 100)
    yield from json_file("result", own["result"], ["rerun", "{folder}/in.json", "--data", table], 100)
    document = own["document"]
    ways = [*framed(document), *cut_short(document, 30), *damaged(document, 80, 3), *xml_changes(document)]
    for number, (way, content) in enumerate(ways):
        form = ("text", "json", "csv", "md", "latex", "typst", "apa", "html")[number % 8]
        yield Input(f"document: {way}, as {form}", {"in.xml": content}, ["show", "{folder}/in.xml", "--format", form])


# ---- Words ----

OPTIONS = ["delimiter", "decimal", "encoding", "na", "weight", "case-id", "nominal", "ordinal", "continuous", "order", "threads",
           "memory", "format", "where", "split", "tests", "compare", "against", "reference", "label", "test-value", "cut-point",
           "probability", "success", "distribution", "mean", "sd", "min", "max", "expected", "outliers", "alpha", "confidence",
           "alternative", "continuity", "zeros", "monte-carlo", "seed", "like", "adjust", "missing", "user-missing", "within",
           "id", "group", "related", "one-sample", "independent", "fields"]
WORDS = ["", " ", ",", "=", ",,,", "x", "x,x", "x=", "=x", "-1", "0", "nan", "inf", "1e999", "99999999999999999999", "0x10", "1,5",
         "'", '"', "\udcff", "𝒳", "*", "all", "n" * 50_000, "%s%n%n", "../..", "/dev/null", "/", "x\ny", "g=a,a", "--"]
FORMULAS = ["~", "x ~", "~ g", "x ~ g ~ g", "x + ~ g", "x ~ g | ", "x ~ | g", "x ~ 1 + 1", "log(x) ~ g", "x * y ~ g", "`x ~ g",
            '"x ~ g', "x ~ g | x | y", "x ~ x", "g ~ x", "x ~ 2", "1 ~ g", "(x) ~ g", "x ~ -g", "x:y ~ g", "x ~ " + "g" * 50_000,
            "\udcff ~ g", "x ~ g\0", "x\n~\ng", "≈", "x ≈ g", "x ~~ g", "x + x ~ g", "... ~ g", "x ~ `g`", "x ~ \"g\""]
CONDITIONS = ["", "x", "x =", "x = = 1", "x ==", "x == 'a", "x > g", "g > 1", "not", "not not x > 1", "x in", "x in (", "x in ()",
              "x in (1,", "x between 1", "x > 1 &", "& x > 1", "x > 1 && y > 1", "x > 1 or", "((x > 1)", "x > 1)", "x > 1e999",
              "x > nan", "x is", "x is null", "1 == 1", "x == 1; y", "x > --1", "x" * 50_000 + " > 1", "\udcff > 1", "x > 1\0",
              "!" * 5000 + "x > 1", "(" * 5000, "x > 1 or " * 2000 + "x > 1", "x / 0 > 1", "`x > 1", "x == 'a''", "w == missing"]


def words():
    analyze = ["analyze", "{folder}/table.csv", "--one-sample", "x", "--independent", "y", "--group", "g"]
    for option in OPTIONS:
        for word in WORDS:
            yield Input(f"--{option} {word[:20]!r}", {}, [*analyze, f"--{option}={word}"])
    for formula in FORMULAS:
        yield Input(f"formula {formula[:30]!r}", {}, ["analyze", "{folder}/table.csv", formula])
    for condition in CONDITIONS:
        yield Input(f"condition {condition[:30]!r}", {}, [*analyze, "--where", condition])
    for command in ("look", "analyze", "run", "rerun", "show", "explain", "verify", "tests", "completion"):
        for word in WORDS:
            yield Input(f"{command} {word[:20]!r}", {}, [command, word])


# ---- Runs ----

def inputs(program):
    yield from tables()
    yield from json_files()
    yield from own_files(program)
    yield from words()


def try_one(options, hostile, folder):
    """How the command ended, and what is wrong with it, or None."""
    small_table(folder)
    for name, content in hostile.files.items():
        pathlib.Path(folder, name).write_bytes(content)
    wants_out = "{folder}/out.xml" in hostile.command
    if wants_out:
        pathlib.Path(folder, "out.xml").write_bytes(OLD)
    before = set(os.listdir(folder))
    words = [word.replace("{folder}", folder).encode(errors="surrogateescape") for word in hostile.command]
    if any(b"\0" in word for word in words):
        words = [word.replace(b"\0", b"\\0") for word in words]  # no word can have it
    run = try_shapes.Run(options, [os.fsdecode(word) for word in words])
    compares = hostile.command[0] == "rerun" and os.WIFEXITED(run.status) and os.WEXITSTATUS(run.status) == IS_OTHER
    mistake = None if compares else run.mistake(options) or mistake_told(run)
    return run, mistake or mistake_left(run, folder, before, wants_out)


def mistake_told(run):
    if run.status == 0:
        return None
    if "\ufffd" in run.told:
        return "messages that are no UTF-8"
    lines = run.told.splitlines()
    if len(lines) > MOST_LINES:
        return f"{len(lines)} lines"
    longest = max(map(len, lines))
    if longest > LONGEST_LINE:
        return f"a line of {longest} characters"
    foreign = FOREIGN_WORDS.search(run.told)
    return f"words of a library: {foreign[0]}" if foreign else None


def mistake_left(run, folder, before, wants_out):
    more = set(os.listdir(folder)) - before
    if more:
        return f"files were left: {sorted(more)}"
    if not wants_out:
        return None
    content = pathlib.Path(folder, "out.xml").read_bytes()
    whole = content.startswith(b"<?xml") and content.rstrip().endswith(b">")
    return None if whole or (content == OLD and run.status != 0) else "the old document is lost, or success without a new one"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--gigabytes", type=int, default=2)
    parser.add_argument("--cpu", action="store_true")
    parser.add_argument("--only", default="")
    parser.add_argument("--every", type=int, default=1)
    parser.add_argument("--list", action="store_true")
    options = parser.parse_args()
    options.program = options.program.resolve()
    try_shapes.MOST_MEMORY = options.gigabytes << 30
    ends = {"taken": 0, "refused": 0, "bad": 0}
    slowest, largest = (0.0, ""), (0, "")
    for number, hostile in enumerate(inputs(options.program)):
        if number % options.every or options.only not in hostile.name:
            continue
        with tempfile.TemporaryDirectory() as folder:
            run, mistake = try_one(options, hostile, folder)
        ends["bad" if mistake else "taken" if run.status == 0 else "refused"] += 1
        if mistake or options.list:
            print(f"{hostile.name}: {mistake or 'good'} (status {run.status >> 8}) {run.told.splitlines()[:1]}"[:400], flush=True)
        slowest = max(slowest, (run.cpu if options.cpu else run.wall, hostile.name))
        largest = max(largest, (run.memory, hostile.name))
    print(f"{sum(ends.values())} inputs: {ends['taken']} taken, {ends['refused']} refused, {ends['bad']} bad; "
          f"the slowest {slowest[0]:.1f} s ({slowest[1]}), the largest {largest[0] >> 20} MB ({largest[1]})")
    return 1 if ends["bad"] or not sum(ends.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
