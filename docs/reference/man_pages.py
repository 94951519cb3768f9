"""Writes manual pages of section 3 from Doxygen's XML: one a header, with all
that it declares, and a link to it for each exported function.

usage: man_pages.py XML_FOLDER OUTPUT_FOLDER VERSION
"""

import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

# The headers with a page of their own, without ".h". What the others declare
# stands on the page of <korvan/korvan.h>, which includes them.
HEADERS = ("korvan", "cryptoapi", "oid_info", "public_key", "string_resources",
           "text", "ini_file", "platform/last_error", "platform/asn1_record")


def escaped(text):
    text = text.replace("\\", r"\e").replace("-", r"\-")
    return re.sub(r"^([.'])", r"\\&\1", text, flags=re.MULTILINE)


def words(text):
    return escaped(re.sub(r"\s+", " ", text or ""))


def in_line(node):
    """An element that stands in a line."""
    text = words(node.text) + "".join(
        in_line(child) + words(child.tail) for child in node)
    return rf"\fB{text}\fP" if node.tag == "computeroutput" else text


def listing(text):
    return [".RS 4", ".nf", *escaped(text.rstrip("\n")).split("\n"), ".fi",
            ".RE"]


def term(title, nodes):
    """A term and what is said of it, set in from the margin."""
    first, *rest = sum(map(blocks, nodes), []) or ["", r"\&"]
    text = [first, *rest] if first != ".PP" else rest
    lines = [".TP", title, text[0]]
    if len(text) > 1:
        lines += [".RS", *text[1:], ".RE"]
    return lines


def blocks(node):
    """The lines of an element that has paragraphs in it, or is one."""
    lines, line = [], [words(node.text)]

    def end_line():
        text = "".join(line).strip()
        if text:
            lines.extend([".PP", re.sub(r"^([.'])", r"\\&\1", text)])
        line.clear()

    for child in node:
        if child.tag == "para":
            end_line()
            lines += blocks(child)
        elif child.tag == "verbatim":
            end_line()
            lines += [".PP"] + listing("".join(child.itertext()))
        elif child.tag == "itemizedlist":
            end_line()
            lines.append(".RS 2")
            for item in child:
                lines += [r".IP \[u2022] 2"] + [
                    text for text in sum(map(blocks, item), [])
                    if text != ".PP"]
            lines.append(".RE")
        elif child.tag == "parameterlist":
            end_line()
            for item in child:
                name = item.findtext("parameternamelist/parametername")
                title = (rf"\fI{escaped(name)}\fP"
                         if child.get("kind") == "param"
                         else rf"Throws \fB{escaped(name)}\fP")
                lines += term(title,
                              item.findall("parameterdescription/para"))
        elif child.tag == "simplesect":
            end_line()
            title = child.findtext("title") or "Result"
            lines += term(escaped(title), child.findall("para"))
        else:
            line.append(in_line(child))
        line.append(words(child.tail))
    end_line()
    return lines


def is_deleted(member):
    return "delete" in member.findtext("argsstring", "")


def is_exported(member):
    return member.get("kind") == "function" and not is_deleted(member)


def name_of(member):
    name = member.findtext("qualifiedname") or member.findtext("name")
    return name.removeprefix("korvan::")


def names_of(entry, header):
    """By which names a reader looks for an entry. CryptoAPI's own types and
    constants, which are many, have their names from elsewhere."""
    if entry.tag == "compounddef":
        name = entry.findtext("compoundname").removeprefix("korvan::")
        return [] if header == "cryptoapi" else [name]
    is_wanted = is_exported(entry) or name_of(entry) == "oid_registry"
    return [name_of(entry)] if is_wanted else []


def declaration(member):
    if member.get("kind") == "enum":
        return f"enum {member.findtext('name')}"
    if member.get("kind") == "define":
        value = "".join(member.find("initializer").itertext())
        return f"#define {member.findtext('name')} {value}"
    definition = member.findtext("definition").replace("korvan::", "")
    if member.get("kind") == "variable":
        value = member.find("initializer")
        definition += "" if value is None else " " + "".join(value.itertext())
    elif member.get("kind") == "function":
        definition += member.findtext("argsstring")
    return definition + ";"


def described(node):
    return (blocks(node.find("briefdescription")) +
            blocks(node.find("detaileddescription")))


class Reference:
    """What Doxygen found, by header."""

    def __init__(self, folder):
        self.files, self.entries = {}, {}
        seen = set()
        for path in sorted(folder.glob("*.xml")):
            root = ElementTree.parse(path).getroot()
            for compound in root.iter("compounddef"):
                location = compound.find("location")
                if location is None:
                    continue
                header = self._header(location.get("file"))
                if compound.get("kind") == "file":
                    self.files[header] = compound
                elif compound.get("kind") in ("class", "struct"):
                    self._add(header, location, compound)
                for member in compound.iter("memberdef"):
                    if member.get("id") not in seen and (
                            member.get("prot") == "public"):
                        seen.add(member.get("id"))
                        location = member.find("location")
                        self._add(self._header(location.get("file")), location,
                                  member)

    @staticmethod
    def _header(file):
        return re.sub(r"^(include/)?korvan/", "", file).removesuffix(".h")

    def _add(self, header, location, node):
        self.entries.setdefault(header, []).append(
            (int(location.get("line")), node))

    def entries_of(self, header):
        """Classes and members, as they stand in the header."""
        return [node for _, node in sorted(self.entries.get(header, []),
                                           key=lambda entry: entry[0])]


def page_name(header):
    return "korvan" if header == "korvan" else (
        "korvan_" + header.removeprefix("platform/"))


def page(reference, header, version):
    headers = [header]
    if header == "korvan":
        headers += [name for name in reference.files if name not in HEADERS]
    entries = [entry for name in headers
               for entry in reference.entries_of(name)]
    names = list(dict.fromkeys(name for entry in entries
                               for name in names_of(entry, header)))
    file = reference.files[header]
    brief = in_line(file.find("briefdescription/para")).strip().rstrip(".")
    lines = [f'.TH {page_name(header).upper()} 3 "" "korvan {version}" "korvan"',
             ".SH NAME",
             ", ".join(map(escaped, [page_name(header), *names])) +
             rf" \- {brief}",
             ".SH SYNOPSIS", ".nf", rf"\fB#include <korvan/{header}.h>\fP", ".fi",
             ".SH DESCRIPTION", *blocks(file.find("detaileddescription"))]
    for entry in entries:
        if entry.tag == "compounddef":
            title = entry.findtext("compoundname").removeprefix("korvan::")
            lines += [f".SS {entry.get('kind')} {escaped(title)}"]
        elif is_deleted(entry):
            continue
        elif "::" in name_of(entry) and entry.get("kind") == "variable":
            lines += term(rf"\fB{escaped(declaration(entry))}\fP",
                          entry.findall("*/para"))
            continue
        else:
            lines += [f".SS {escaped(name_of(entry))}",
                      ".nf", rf"\fB{escaped(declaration(entry))}\fP", ".fi"]
        lines += described(entry)
        for value in entry.findall("enumvalue"):
            lines += term(rf"\fB{value.findtext('name')}\fP",
                          value.findall("*/para"))
    lines += [".SH SEE ALSO", ",\n".join(
        rf"\fB{page_name(other)}\fP(3)" for other in HEADERS
        if other != header)]
    return "\n".join(lines) + "\n", names


def main():
    xml, output, version = sys.argv[1:]
    reference = Reference(pathlib.Path(xml))
    folder = pathlib.Path(output) / "man3"
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.iterdir():
        old.unlink()
    for header in HEADERS:
        text, names = page(reference, header, version)
        (folder / f"{page_name(header)}.3").write_text(text, encoding="utf-8")
        # Nobody asks for an operator or a destructor by its name.
        for name in (name for name in names
                     if "operator" not in name and "~" not in name):
            (folder / f"{name}.3").write_text(
                f".so man3/{page_name(header)}.3\n", encoding="utf-8")


if __name__ == "__main__":
    main()
