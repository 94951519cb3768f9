"""Writes the page of the OID registry.

usage: registry_page.py PROGRAM TEMPLATE PAGE

PROGRAM is registry_records, which prints what the page shows.
"""

import html
import json
import pathlib
import subprocess
import sys

GROUPS = {1: "hash algorithms", 2: "encryption algorithms",
          3: "public-key algorithms", 4: "signature algorithms",
          5: "name attributes", 6: "extensions and attributes",
          7: "enhanced key usages", 8: "policies", 20: "parameter sets"}


def note(record):
    """How a record is found, where that is not by its OID."""
    found_by = record["found_by"]
    if not found_by:
        return "no search: others with its OID and its name stand before it"
    if "OID" not in found_by:
        return (f"{' and '.join(found_by)} only: another with its OID stands "
                "before it")
    return ""


def row(number, record):
    place = f"{record['group']}-{number}"
    algid = f"0x{record['algid']:04X}" if record["algid"] else ""
    extra = " ".join(f"0x{word:X}" for word in record["extra"])
    cng = ", ".join(text for text in (record["cng"], record["cng_extra"])
                    if text)
    words = [record["oid"], record["name"] or "", algid,
             str(record["algid"] or ""), cng]
    remark = note(record)
    attributes = f'id="{place}" data-group="{record["group"]}"'
    attributes += f' data-words="{html.escape(" ".join(words).lower())}"'
    attributes += " data-marked" if record["marked"] else ""
    attributes += " data-note" if remark else ""
    # Where the page is narrow, a title stands for the head of the column.
    cells = [
        ("number", "", f'<a href="#{place}">{number}</a>'),
        ("number", "group", str(record["group"])),
        ("oid", "", html.escape(record["oid"])),
        ("name", "", html.escape(record["name"] or "")),
        ("number", "ALG_ID", algid),
        ("number", "extra", extra),
        ("name", "CNG", html.escape(cng)),
        ("mark", "marked", "yes" if record["marked"] else ""),
        ("note", "found by",
         html.escape(remark) or ", ".join(record["found_by"])),
    ]
    return f"<tr {attributes}>" + "".join(
        f'<td class="{kind}"' + (f' title="{title}"' if title else "") +
        f">{text}</td>" for kind, title, text in cells) + "</tr>"


def main():
    program, template, page = map(pathlib.Path, sys.argv[1:])
    printed = subprocess.run([program], check=True, capture_output=True).stdout
    rows = []
    counts = {group: 0 for group in GROUPS}
    for record in json.loads(printed):
        counts[record["group"]] += 1
        rows.append(row(counts[record["group"]], record))
    groups = "\n".join(f'    <option value="{group}">{group}, {words}</option>'
                       for group, words in GROUPS.items())
    page.write_text(
        template.read_text(encoding="utf-8").replace("@GROUPS@", groups)
        .replace("@COUNT@", str(len(rows))).replace("@ROWS@", "\n".join(rows)),
        encoding="utf-8")


if __name__ == "__main__":
    main()
