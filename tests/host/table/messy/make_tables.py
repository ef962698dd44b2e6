#!/usr/bin/env python3
"""Makes the tables of this folder and `cases.json`, which says what each imitates and how it is to be read.

usage: make_tables.py

Nearly all of them hold one and the same table, written as one program or another writes it, so that what is to be read
is known from here and not from a reader: the rows below, or the one line by which the table is refused.
"""
import gzip
import json
import os

FIELDS = ["id", "arm", "score", "income"]
ROWS = [[1, "low", 2.5, 1234.5], [2, "high", 3.25, 980], [3, "low", None, 12000.75], [4, "Müller", 4, 1500],
        [5, "high", 7.75, 2750.25]]
FOLDER = os.path.dirname(os.path.abspath(__file__))
cases = []


def number(value, decimal=".", thousands="", missing="", places=None):
    """A number as a program writes it."""
    if value is None:
        return missing
    text = f"{value:.{places}f}" if places is not None else f"{value:.10g}"
    whole, _, fraction = text.partition(".")
    groups = []
    while len(whole) > 3 and thousands:
        groups.insert(0, whole[-3:])
        whole = whole[:-3]
    return thousands.join([whole] + groups) + (decimal + fraction if fraction else "")


def table(delimiter=",", end="\n", quote=lambda text: text, **style):
    """The table as text, each cell of a row as `quote` writes it."""
    lines = [delimiter.join(quote(name) for name in FIELDS)]
    for code, arm, score, income in ROWS:
        cells = [str(code), quote(arm), number(score, **style), number(income, **style)]
        lines.append(delimiter.join(cells))
    return end.join(lines) + end


def with_names_of_rows():
    lines = table(quote=quoted, missing="NA").rstrip("\n").split("\n")
    return "\n".join([lines[0]] + [quoted(str(i + 1)) + "," + line for i, line in enumerate(lines[1:])]) + "\n"


def quoted(text):
    return '"' + text + '"'


def case(file, imitates, content, notes=(), error=None, fields=None, rows=None, missing=None, **options):
    """A file with what it is like and how it has to be read."""
    data = content.encode() if isinstance(content, str) else content
    with open(os.path.join(FOLDER, file), "wb") as out:
        out.write(data)
    expected = {"file": file, "imitates": imitates, "options": options}
    if error is not None:
        expected["error"] = file + error
    else:
        expected["notes"] = [file + ": " + note for note in notes]
        expected["fields"] = fields or FIELDS
        expected["rows"] = ROWS if rows is None else rows
        if missing:
            expected["missing"] = missing
    cases.append(expected)


def again(file, imitates, notes=(), error=None, fields=None, rows=None, **options):
    """The file of an earlier case, with options."""
    with open(os.path.join(FOLDER, file), "rb") as content:
        case(file, imitates, content.read(), notes, error, fields, rows, **options)


def zstandard(data):
    """A frame with one block that is stored as it is (RFC 8878, 3.1.1)."""
    assert 256 <= len(data) < 65536 + 256 or len(data) < 256
    small = len(data) < 256
    header = b"\x20" + bytes([len(data)]) if small else b"\x60" + (len(data) - 256).to_bytes(2, "little")
    return b"\x28\xb5\x2f\xfd" + header + (len(data) << 3 | 1).to_bytes(3, "little") + data


german = table(";", "\r\n", decimal=",", thousands=".", places=2)
GERMAN = "semicolons, decimal commas, points between thousands"

# ---- spreadsheets of several countries ----
case("plain.csv", "what every program can write", table())
case("crlf.csv", "a spreadsheet set to English", table(end="\r\n"))
case("german_utf8.csv", "a German spreadsheet, with a mark of UTF-8", b"\xef\xbb\xbf" + german.encode(), [GERMAN])
case("german_1252.csv", "a German spreadsheet of some years ago", german.encode("cp1252"),
     error=":5: byte 0xFC; expected text in UTF-8, or its encoding told: --encoding windows-1252")
again("german_1252.csv", "the same with its encoding told", [GERMAN], encoding="windows-1252")
case("german_8859.csv", "a German program on an old machine", german.encode("latin-1"), [GERMAN],
     encoding="iso-8859-1")
case("french.csv", "a French spreadsheet, narrow blanks in large numbers",
     table(";", decimal=",", thousands="\u202f", places=2), ["semicolons, decimal commas, blanks between thousands"])
case("french_1252.csv", "a French spreadsheet of some years ago",
     table(";", "\r\n", decimal=",", thousands="\u00a0", places=2).encode("cp1252"),
     ["semicolons, decimal commas, blanks between thousands"], encoding="windows-1252")
case("swiss.csv", "a Swiss spreadsheet", table(";", thousands="'", places=2),
     ["semicolons, apostrophes between thousands"])
case("swiss_curled.csv", "a Swiss spreadsheet, curled apostrophes", table(";", thousands="\u2019", places=2),
     ["semicolons, apostrophes between thousands"])
american = [",".join(FIELDS)] + [f'{a},{b},{number(c)},"{number(d, thousands=",", places=2)}"' for a, b, c, d in ROWS]
case("american.csv", "an American spreadsheet with formatted numbers", "\n".join(american) + "\n",
     ["commas between thousands"])
whole = ["year,people,rate", '2020,"12,345",1.5', '2021,"13,456",2.5', '2022,"14,567",2.25']
case("whole_thousands.csv", "an office of statistics: whole numbers with commas, rates with points",
     "\n".join(whole) + "\n", ["commas between thousands"], fields=["year", "people", "rate"],
     rows=[[2020, 12345, 1.5], [2021, 13456, 2.5], [2022, 14567, 2.25]])
either = 'year,people\n2020,"12,345"\n2021,"13,456"\n'
case("either.csv", "the same without a number that tells which mark is which", either,
     error=': column "people": "12,345" may have a decimal comma or a mark of thousands; expected to be told: '
           "--decimal , or --decimal .")
again("either.csv", "the same with points told", ["commas between thousands"], fields=["year", "people"],
      rows=[[2020, 12345], [2021, 13456]], decimal=".")
again("either.csv", "the same with commas told", [], fields=["year", "people"], rows=[[2020, 12.345], [2021, 13.456]],
      decimal=",")
commas = ["id,score"] + [f'{a},"{number(c, decimal=",")}"' for a, _, c, _ in ROWS]
case("quoted_decimal_commas.csv", "a German program that writes commas between cells, too", "\n".join(commas) + "\n",
     ["decimal commas"], fields=["id", "score"], rows=[[a, c] for a, _, c, _ in ROWS])
case("bare_decimal_commas.csv", "a program that knows nothing of quotes", "id,arm,score\n1,low,2,5\n2,high,3\n3,low,1\n",
     error=":2: 4 cells; expected 3 as in the header (a comma inside a number or a text without quotes?)")
case("bare_decimal_each.csv", "the same with a comma in each row, which is no header without a name",
     "id,score\n1,2,5\n2,3,5\n3,1,5\n",
     error=":2: 3 cells; expected 2 as in the header (a comma inside a number or a text without quotes?)")
case("money.csv", "bare amounts of money with commas between thousands", "price\n$1,200.50\n$2,300.00\n",
     error=":2: 2 cells; expected 1 as in the header (a comma inside a number or a text without quotes?)")
case("dollars.csv", "amounts of money in a spreadsheet of the United States",
     table(quote=lambda text: text).replace("1234.5", '"$1,234.50"').replace("12000.75", '"$12,000.75"')
     .replace(",980", ",$980.00").replace("1500", '"$1,500.00"').replace("2750.25", '"$2,750.25"'),
     ["commas between thousands, signs of currency left out ($)"])
case("euros.csv", "amounts of money in a German spreadsheet, some of them negative",
     "account;amount\n1;1.200,50 €\n2;-3,25 €\n3;0,00 €\n",
     ["semicolons, decimal commas, points between thousands, signs of currency left out (€)"],
     fields=["account", "amount"], rows=[[1, 1200.5], [2, -3.25], [3, 0]])
case("two_currencies.csv", "amounts in two currencies, which are no numbers of one kind",
     "account,amount\n1,$5\n2,£5\n3,$7\n", fields=["account", "amount"], rows=[[1, "$5"], [2, "£5"], [3, "$7"]])
case("names.txt", "one column with names of two words", "full name\nJane Doe\nJohn Roe\nRoom 1\n",
     fields=["full name"], rows=[["Jane Doe"], ["John Roe"], ["Room 1"]])
case("unknown.csv", "a word for what is missing in the first row, which is no row of units",
     "x,y\nunknown,unknown\n1,2\n3,4\n", fields=["x", "y"], rows=[["unknown", "unknown"], ["1", "2"], ["3", "4"]])
case("r_write_table.csv", "R's write.table with commas", with_names_of_rows(), ["the first column has no name and is called row"],
     fields=["row"] + FIELDS, rows=[[i + 1] + row for i, row in enumerate(ROWS)])
case("one_column.csv", "a column copied from a German spreadsheet", "score\n2,5\n3,25\n\n4\n",
     ["semicolons, decimal commas"], fields=["score"], rows=[[2.5], [3.25], [None], [4]])
case("separator_line.csv", "a file for a spreadsheet, which says its delimiter",
     "sep=;\r\n" + table(";", "\r\n"), ['the line "sep=;" above the header passed over'])
case("unicode_text.txt", "a spreadsheet's Unicode text: UTF-16 and tabs",
     b"\xff\xfe" + table("\t", "\r\n").encode("utf-16-le"), ["UTF-16, tabs"])
case("utf16_be.csv", "UTF-16 of the other kind", b"\xfe\xff" + table().encode("utf-16-be"), ["UTF-16"])
case("utf16_bare.csv", "UTF-16 without a mark", table().encode("utf-16-le"),
     error=":1: byte 0x00; expected text in UTF-8, or its encoding told: --encoding utf-16le")
again("utf16_bare.csv", "the same with its encoding told", encoding="utf-16le")
case("carriage_returns.csv", "a spreadsheet on an old machine", table(end="\r"),
     ["lines that end with a carriage return"])
case("trailing.csv", "a program that ends each row with a delimiter",
     table(";", end=";\n"), ["semicolons, an empty column at the end left out"])
case("trailing_rows.csv", "a program that ends each row but the header with a delimiter",
     table(";", end=";\n").replace("income;", "income"), ["semicolons, an empty column at the end left out"])
case("trailing_header.csv", "a header with cells of columns that were deleted", table().replace("income", "income,,"))
case("trailing_wide.csv", "a spreadsheet with a format in empty columns", table(end=",,,\n"),
     ["3 empty columns at the end left out"])
case("report.csv", "a report of an office: a title above the table",
     "Table 3: scores and income\n\n" + table(), ['1 line above the header passed over, "Table 3: scores and income"'])
case("report_wide.csv", "the same from a spreadsheet, as wide as the table",
     "Scores and income,,,\nas of 2026,,,\n,,,\n" + table(),
     ['3 lines above the header passed over, "Scores and income"'])
case("percent.csv", "a spreadsheet with percents", "id;share\n1;12,5%\n2;50%\n3;\n4;7,25 %\n",
     ["semicolons, decimal commas, percent signs left out"], fields=["id", "share"],
     rows=[[1, 12.5], [2, 50], [3, None], [4, 7.25]])
case("dates.csv", "dates as they are written in Germany, which are words", "day;score\n01.02.2024;1,5\n13.02.2024;2,5\n",
     ["semicolons, decimal commas"], fields=["day", "score"], rows=[["01.02.2024", 1.5], ["13.02.2024", 2.5]])
case("errors.csv", "a spreadsheet with errors of its own", table(missing="#N/A"))

# ---- R and pandas ----
ordinals = [quoted(str(i + 1)) for i in range(len(ROWS))]


def with_index(text, index, head):
    lines = text.rstrip("\n").split("\n")
    return "\n".join(a + b for a, b in zip([head] + index, lines)) + "\n"


indexed = dict(fields=["row"] + FIELDS, rows=[[i + 1] + row for i, row in enumerate(ROWS)])
INDEX = "the first column has no name and is called row"
case("r_write_csv.csv", "R's write.csv", with_index(table(quote=quoted, missing="NA"), [o + "," for o in ordinals],
                                                    '"",'), [INDEX], **indexed)
case("r_write_csv2.csv", "R's write.csv2",
     with_index(table(";", quote=quoted, decimal=",", missing="NA"), [o + ";" for o in ordinals], '"";'),
     ["semicolons, " + INDEX + ", decimal commas"], **indexed)
case("r_write_table.txt", "R's write.table with tabs: the header has no cell for the names of the rows",
     with_index(table("\t", quote=quoted, missing="NA"), [o + "\t" for o in ordinals], ""), ["tabs, " + INDEX],
     **indexed)
case("r_write_table_blanks.txt", "R's write.table as it writes by itself",
     with_index(table(" ", quote=quoted, missing="NA"), [o + " " for o in ordinals], ""),
     ["blanks between cells, " + INDEX], **indexed)
case("r_print.txt", "a data frame as R shows it, copied from a terminal",
     "  id    arm score   income\n1  1    low  2.50  1234.50\n2  2   high  3.25   980.00\n"
     "3  3    low    NA 12000.75\n4  4 Müller  4.00  1500.00\n5  5   high  7.75  2750.25\n",
     ["blanks between cells, " + INDEX], **indexed)
case("pandas_index.csv", "pandas' to_csv with its index",
     with_index(table(), [f"{i}," for i in range(len(ROWS))], ","), [INDEX], fields=["row"] + FIELDS,
     rows=[[i] + row for i, row in enumerate(ROWS)])
case("pandas_nan.tsv", "pandas' to_csv with tabs and na_rep='nan'", table("\t", missing="nan"), ["tabs"])

# ---- databases ----
case("batch.tsv", "a database client in batch mode", table("\t", missing="NULL"), ["tabs"])
case("dump.tsv", "a dump of a database, with its own mark of what is missing", table("\t", missing="\\N"), ["tabs"],
     na=["\\N"])
aligned = [" id | arm    | score | income  ", "----+--------+-------+---------", "  1 | low    |   2.5 | 1234.5",
           "  2 | high   |  3.25 | 980", "  3 | low    |       | 12000.75", "  4 | Müller |     4 | 1500",
           "  5 | high   |  7.75 | 2750.25"]
case("aligned.txt", "a database client that lines columns up", "\n".join(aligned) + "\n",
     ["vertical bars, blanks around cells left out, 1 row of lines below the header passed over"])
case("footer.txt", "a database client that counts the rows", table("|") + "(5 rows)\n",
     error=":7: 1 cell; expected 4 as in the header (a line that is no row of the table, or a line break inside a text "
           "without quotes?)")
case("pipes.txt", "an unloaded table of a database", table("|"), ["vertical bars"])
case("all_quoted.csv", "a database client that quotes everything",
     "\n".join(",".join(quoted(cell) for cell in line.split(",")) for line in table().strip().split("\n")) + "\n")
case("comments.csv", "an instrument: comments above the table", "# device: 7\n# unit: mmol, per litre\n" + table(),
     ["2 comments above it passed over"])
case("hash_header.tsv", "a tool of biology, whose header begins with a number sign",
     table("\t").replace("id", "#id", 1), ["tabs"], fields=["#id"] + FIELDS[1:])
case("repeated.csv", "several files in one, each with its header", table() + "id,arm,score,income\n6,low,1,100\n",
     ["the header stands there a second time; passed over"], rows=ROWS + [[6, "low", 1, 100]])
case("padded.csv", "somebody who types a blank behind each comma", table(", "), ["blanks around cells left out"])
case("blank_end.csv", "a text editor: blank lines in between and at the end",
     table().replace("2,high", "\n2,high") + "\n\r\n\n")
case("no_end.csv", "a program that doesn't end the last line", table().rstrip("\n"))

# ---- surveys and laboratories ----
case("units.csv", "a laboratory: units in a second row", table().replace("income\n", "income\n(no.),,(points),(euro)\n"),
     ['1 row without values below the header passed over, "(no.)"'])
survey = 'Q1,Q2,Q3\nHow old are you?,"Which arm,\nplease?",How many hours?\n"{""ImportId"":""QID1""}","{""ImportId"":""QID2""}","{""ImportId"":""QID3""}"\n' \
         "31,low,7.5\n45,high,6\n28,low,8.25\n"
case("survey.csv", "a survey tool: the questions and its own names below the header", survey,
     ['2 rows without values below the header passed over, "How old are you?"'], fields=["Q1", "Q2", "Q3"],
     rows=[[31, "low", 7.5], [45, "high", 6], [28, "low", 8.25]])
case("answers.csv", "a survey tool: several answers in a cell", 'id,answers\n1,"1,2,3"\n2,"2"\n3,"1,4"\n',
     fields=["id", "answers"], rows=[[1, "1,2,3"], [2, "2"], [3, "1,4"]])
case("bare_semicolon.csv", "free texts without quotes", "id;comment;score\n1;fine;2\n2;good; but late;3\n3;none;4\n",
     error=":3: 4 cells; expected 3 as in the header (a semicolon inside a text without quotes?)")
case("bare_break.csv", "a free text with a line break and without quotes",
     "id,comment,score\n1,fine,2\n2,good\nbut late,3\n3,none,4\n",
     error=":3: 2 cells; expected 3 as in the header (a line break inside a text without quotes?)")
marks = ["", "NA", "N/A", "n/a", ".", "-", "NULL", "NaN", "#N/A", "nan", "null"]
lines = ["id,score,sign"] + [f"{i},{mark},{'-' if i % 2 else '+'}" for i, mark in enumerate(marks)] + ["11,2.5,."]
case("missing.csv", "every usual mark of a missing number; a hyphen and a point are categories among words",
     "\n".join(lines) + "\n", fields=["id", "score", "sign"],
     rows=[[i, None, "-" if i % 2 else "+"] for i in range(len(marks))] + [[11, 2.5, "."]],
     missing={"score": {mark: 1 for mark in marks}})
case("codes.csv", "a survey program that writes codes for what is missing", table(missing="-99"), na=["-99"])
case("words.csv", "texts that mark what is missing among words", "id,arm\n1,NULL\n2,a\n3,n/a\n4,-\n5,b\n",
     fields=["id", "arm"], rows=[[1, None], [2, "a"], [3, None], [4, "-"], [5, "b"]],
     missing={"arm": {"NULL": 1, "n/a": 1}})

# ---- compressed ----
case("german.csv.gz", "a compressed table", gzip.compress(german.encode(), mtime=0), [GERMAN])
case("german.csv.zst", "a table compressed in another way", zstandard(german.encode()), [GERMAN])
case("parts.csv.gz", "two compressed files in one",
     b"".join(gzip.compress(part.encode(), mtime=0) for part in (table()[:40], table()[40:])))
case("cut.csv.gz", "a download that broke off", gzip.compress(german.encode(), mtime=0)[:-20],
     error=": the gzip data ends too early; expected a whole compressed file")
case("cut.csv.zst", "the same", zstandard(german.encode())[:-20],
     error=": the Zstandard data ends too early; expected a whole compressed file")
broken = bytearray(gzip.compress(german.encode(), mtime=0))
broken[-6] ^= 0xff
case("broken.csv.gz", "a file whose check sum is wrong", bytes(broken),
     error=": broken gzip data; expected a whole compressed file")

# ---- no tables of text ----
TEXT = "; expected a table as text: "
case("table.parquet", "a Parquet file", b"PAR1\x15\x04\x15\x00" + bytes(40), error=": a Parquet file" + TEXT +
     "export it as CSV")
case("table.arrow", "an Arrow file", b"ARROW1\x00\x00" + bytes(40), error=": an Arrow file" + TEXT + "export it as CSV")
case("table.xlsx", "a spreadsheet", b"PK\x03\x04\x14\x00\x06\x00" + bytes(22) + b"[Content_Types].xml",
     error=": a spreadsheet, not its text" + TEXT + "export it as CSV")
case("table.zip", "an archive", b"PK\x03\x04\x14\x00\x06\x00" + bytes(22) + b"data.csv", error=": a zip archive" + TEXT +
     "unpack it first")
case("table.bin", "a data file of another program", b"$FILE@(#)" + bytes(60), error=": binary data" + TEXT +
     "export it as CSV")
case("table.html", "a page in place of the download", "<!DOCTYPE html>\n<html><body>Log in</body></html>\n",
     error=": an HTML page" + TEXT + "export it as CSV")
case("table.json", "records as JSON", '[\n  {"id": 1, "score": 2.5}\n]\n', error=": JSON" + TEXT + "export it as CSV")
case("bracketed.csv", "a database client that puts names in brackets, which is no JSON", "[id],[score]\n1,2.5\n",
     fields=["[id]", "[score]"], rows=[[1, 2.5]])

with open(os.path.join(FOLDER, "cases.json"), "w") as out:
    json.dump(cases, out, ensure_ascii=False, indent=1)
    out.write("\n")
