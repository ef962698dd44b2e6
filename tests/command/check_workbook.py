#!/usr/bin/env python3
"""Reads workbooks of the command back, with nothing but the standard library: sheets, numbers with all their digits as
the JSON of the same run has them, names that look like formulas or markup as text; and that a terminal gets none.

usage: check_workbook.py TARN SOURCES
"""
import io
import json
import os
import pty
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
import zipfile

MAIN = "{http://schemas.openxmlformats.org/spreadsheetml/2006/main}"
REL = "{http://schemas.openxmlformats.org/officeDocument/2006/relationships}"
tarn, sources = sys.argv[1:3]


def run(*arguments):
    done = subprocess.run([tarn, *arguments], capture_output=True, cwd=sources)
    assert done.returncode == 0, done.stderr
    return done.stdout


def sheets_of(workbook):
    """The rows of each sheet by its name, as dictionaries from the titles in its first row."""
    archive = zipfile.ZipFile(io.BytesIO(workbook))
    assert archive.testzip() is None
    strings = [
        "".join(part.text or "" for part in item.iter(MAIN + "t"))
        for item in ElementTree.fromstring(archive.read("xl/sharedStrings.xml")).iter(MAIN + "si")
    ]
    targets = {
        each.get("Id"): each.get("Target")
        for each in ElementTree.fromstring(archive.read("xl/_rels/workbook.xml.rels"))
    }
    sheets = {}
    for sheet in ElementTree.fromstring(archive.read("xl/workbook.xml")).iter(MAIN + "sheet"):
        xml = ElementTree.fromstring(archive.read("xl/" + targets[sheet.get(REL + "id")]))
        assert not list(xml.iter(MAIN + "f")), "a formula in " + sheet.get("name")
        rows = []
        for row in xml.iter(MAIN + "row"):
            cells = {}
            for cell in row.iter(MAIN + "c"):
                value = cell.find(MAIN + "v").text
                column = re.match("[A-Z]+", cell.get("r")).group()
                cells[column] = strings[int(value)] if cell.get("t") == "s" else float(value)
            rows.append(cells)
        titles = rows[0] if rows else {}
        sheets[sheet.get("name")] = [{titles[c]: v for c, v in cells.items()} for cells in rows[1:]]
    return sheets


def check_numbers():
    request = ["analyze", "tests/cases/kgroups-plants-pairwise/data.csv", "--independent", "weight", "--by", "group"]
    sheets = sheets_of(run(*request, "--format", "xlsx"))
    result = json.loads(run(*request, "--format", "json"))
    test = result["tests"][0]
    assert list(sheets) == ["Summary", "Groups", "Statistics", "Effects", "Comparisons", "Notes", "Record"], list(sheets)
    assert len(sheets["Summary"]) == 1
    statistics = {row["symbol"]: row for row in sheets["Statistics"]}
    expected = test["statistics"][0]
    # Sixteen digits are what a cell holds.
    assert abs(statistics["H"]["value"] / expected["statistic"] - 1) < 1e-15
    assert abs(statistics["p"]["value"] / expected["p_values"][0]["value"] - 1) < 1e-15
    assert statistics["H"]["df"] == 2 and statistics["p"]["as shown"] == "p = .018"
    medians = {row["group or field"]: row["median"] for row in sheets["Groups"]}
    # By hand from the sorted tables of Dobson (1983): the means of the fifth and the sixth of ten values.
    assert {k: round(v, 9) for k, v in medians.items()} == {"ctrl": 5.155, "trt1": 4.55, "trt2": 5.435}, medians
    pairs = [(row["first"], row["second"], row["p adjusted"]) for row in sheets["Comparisons"]]
    assert [pair[:2] for pair in pairs] == [("ctrl", "trt1"), ("ctrl", "trt2"), ("trt1", "trt2")]
    for pair, told in zip(pairs, test["comparisons"]["pairs"]):
        assert abs(pair[2] / told["adjusted_p"] - 1) < 1e-15
    kinds = {row["what"] for row in sheets["Notes"]}
    assert {"Method", "Conclusion", "Note"} <= kinds, kinds
    record = {row["what"]: row["text"] for row in sheets["Record"]}
    assert {"Significance level", "Hash of the data as used", "Request", "Program", "Libraries"} <= set(record), record
    assert record["Hash of the data as used"] == "SHA-256 " + result["record"]["data"]["sha256"], record


def check_names():
    names = ['=HYPERLINK("x")', "+1", "</v><f>1</f>", "a & b", "\u05e9\u05dc\u05d5\u05dd", "\U0001f600", "n" * 300]
    with tempfile.TemporaryDirectory() as scratch:
        path = os.path.join(scratch, "names.csv")
        with open(path, "w", encoding="utf-8") as file:
            file.write("x,g\n")
            for i in range(3 * len(names)):
                file.write('%d,"%s"\n' % (i * 7 % 23, names[i % len(names)].replace('"', '""')))
        sheets = sheets_of(run("analyze", path, "--independent", "x", "--by", "g", "--format", "xlsx"))
        parts = sheets_of(run("analyze", path, "--one-sample", "x", "--split", "g", "--format", "xlsx"))
    assert sorted(row["group or field"] for row in sheets["Groups"]) == sorted(names)
    assert {row["part"] for row in parts["Statistics"]} <= {"g = " + name for name in names}


def check_size():
    with tempfile.TemporaryDirectory() as scratch:
        path = os.path.join(scratch, "long.csv")
        with open(path, "w", encoding="utf-8") as file:
            file.write("x,g\n" + "".join("%d,%s%d\n" % (i, "n" * 40000, i % 2) for i in range(20)))
        done = subprocess.run([tarn, "analyze", path, "--independent", "x", "--by", "g", "--format", "xlsx"],
                              capture_output=True)
    assert done.returncode == 2 and done.stdout == b"" and done.stderr.count(b"\n") == 1, done
    assert b"a cell holds 32767; --format json holds it" in done.stderr, done.stderr


def check_terminal():
    leader, follower = pty.openpty()
    done = subprocess.run([tarn, "analyze", "examples/tasting.csv", "--one-sample", "bitter", "--format", "xlsx"],
                          stdout=follower, stderr=subprocess.PIPE, cwd=sources)
    os.close(follower)
    assert done.returncode == 2 and b"--format xlsx > FILE.xlsx" in done.stderr, done
    os.close(leader)


check_numbers()
check_names()
check_size()
check_terminal()
