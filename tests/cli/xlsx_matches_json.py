#!/usr/bin/env python3
"""Checks a workbook written by "--format xlsx" against the same recordset
written by "--format json", read with openpyxl (an independent reader).

usage: xlsx_matches_json.py BOOK.xlsx ROWS.json TITLE COMPANY SHEET

Every cell must hold its JSON value with the spreadsheet type that value
calls for (Null an empty cell, text a text with the characters XML cannot
hold replaced, line breaks as LF and cut to a cell's size, numbers, Booleans, dates with the
house format; an empty text is an empty cell, as a spreadsheet keeps no
empty text apart from no value), and the header, freeze, filter and properties must be set.
Exits 1 with one line per difference (the first 20)."""
import datetime
import json
import re
import sys

import openpyxl

INVALID = re.compile("[\x00-\x08\x0b\x0c\x0e-\x1f\ufffe\uffff]")
CELL_BYTES = 32767
TWO_DECIMALS = {6, 14, 131}
WHOLE = {2, 3, 16, 17, 20, 139}


def expected_text(text):
    text = INVALID.sub("\ufffd", text).replace("\r\n", "\n").replace("\r", "\n")
    data = text.encode("utf-8")[:CELL_BYTES]
    return data.decode("utf-8", errors="ignore")


def main():
    book_path, json_path, title, company, sheet_name = sys.argv[1:6]
    doc = json.load(open(json_path, encoding="utf-8"))
    book = openpyxl.load_workbook(book_path)
    problems = []

    def check(ok, what):
        if not ok:
            problems.append(what)

    check(book.sheetnames == [sheet_name], f"sheets {book.sheetnames}, expected [{sheet_name}]")
    check(book.properties.title == title, f"title {book.properties.title!r}")
    sheet = book.worksheets[0]
    fields = doc["fields"]
    rows = list(sheet.iter_rows())
    check(len(rows) == len(doc["rows"]) + 1, f"{len(rows) - 1} rows, expected {len(doc['rows'])}")
    header = rows[0] if rows else []
    check([c.value for c in header] == [f["name"] for f in fields], "header names")
    check(all(c.font.b for c in header), "header not bold")
    check(sheet.freeze_panes == "A2", f"freeze panes {sheet.freeze_panes}")
    if fields:
        last = openpyxl.utils.get_column_letter(len(fields))
        check(sheet.auto_filter.ref == f"A1:{last}1", f"autofilter {sheet.auto_filter.ref}")

    for r, (values, cells) in enumerate(zip(doc["rows"], rows[1:]), start=2):
        cells = list(cells) + [None] * (len(values) - len(cells))
        for field, value, cell in zip(fields, values, cells):
            got = None if cell is None else cell.value
            where = f"row {r} {field['name']}: {value!r} read as {got!r}"
            if value is None:
                check(got is None, where)
            elif isinstance(value, bool):
                check(got is value, where)
            elif isinstance(value, (int, float)):
                check(type(got) in (int, float) and not isinstance(got, bool) and got == value, where)
                fmt = cell.number_format
                want = "0.00" if field["type"] in TWO_DECIMALS else "0" if field["type"] in WHOLE else "General"
                check(fmt == want, f"{where}: format {fmt}, expected {want}")
            elif field["type"] in (7, 133, 135) and re.fullmatch(r"\d{4}-\d\d-\d\d(T\d\d:\d\d:\d\d)?", value):
                when = datetime.datetime.fromisoformat(value)
                if when.year < 1900:
                    continue  # kept as text
                check(isinstance(got, datetime.datetime) and got == when, where)
                want = "dd/mm/yyyy hh:mm:ss" if "T" in value else "dd/mm/yyyy"
                check(cell.number_format == want, f"{where}: format {cell.number_format}")
            elif value == "":
                check(got is None, where)
            else:
                check(isinstance(got, str) and got == expected_text(value), where[:300])
    for p in problems[:20]:
        print(p)
    if problems:
        print(f"{len(problems)} differences")
        return 1
    print(f"{len(doc['rows'])} rows of {len(fields)} fields match")
    return 0


if __name__ == "__main__":
    sys.exit(main())
