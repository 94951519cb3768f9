"""Fails unless the reference explains every exported function whole: what it
does, an example, arguments, result, errors, ownership, threads, exceptions, in
this order; and unless no link in its pages leads nowhere, and no command of
Doxygen's is shown as text.

usage: reference_test.py HTML_FOLDER XML_FOLDER SYMBOLS...

SYMBOLS are lists of the exported symbols, as the tests of the binaries have
them.
"""

import html.parser
import pathlib
import re
import sys
import urllib.parse
import xml.etree.ElementTree as ElementTree


def parts_of(member):
    """What a function's text says, in the order in which it does."""
    parts = ["what it does"] if "".join(
        member.find("briefdescription").itertext()).strip() else []
    for node in member.find("detaileddescription").iter():
        if node.tag == "verbatim":
            parts.append("an example")
        elif node.tag == "parameterlist":
            parts.append({"param": "arguments",
                          "exception": "exceptions"}[node.get("kind")])
        elif node.tag == "simplesect":
            parts.append("result" if node.get("kind") == "return"
                         else node.findtext("title").lower())
    return parts


def wanted_of(member):
    wanted = ["what it does", "an example"]
    if member.find("param") is not None:
        wanted.append("arguments")
    if "".join(member.find("type").itertext()) not in ("", "void"):
        wanted.append("result")
    return wanted + ["errors", "ownership", "threads", "exceptions"]


def explained(xml):
    """The names of the functions that are explained, and complaints."""
    names, complaints = set(), []
    for path in sorted(xml.glob("*.xml")):
        for member in ElementTree.parse(path).getroot().iter("memberdef"):
            if (member.get("kind") != "function" or
                    member.get("prot") != "public" or
                    "delete" in member.findtext("argsstring", "")):
                continue
            name = (member.findtext("qualifiedname") or
                    member.findtext("name"))
            names.add(name)
            parts, wanted = parts_of(member), wanted_of(member)
            if parts != wanted:
                complaints.append(
                    f"{name}{member.findtext('argsstring')} has\n"
                    f"  {', '.join(parts)}, but should have\n"
                    f"  {', '.join(wanted)}")
    return names, complaints


def exported(lists):
    """The functions of the lists, without their arguments."""
    lines = {line for path in lists
             for line in pathlib.Path(path).read_text().splitlines()}
    functions = {re.sub(r"\((?!\)\().*", "", line) for line in lines
                 if "(" in line}
    # C's have no arguments in their symbols.
    return functions | ({"GetLastError", "SetLastError"} & lines)


class Links(html.parser.HTMLParser):
    """The places of a page, and where its links lead."""

    def __init__(self, page):
        super().__init__()
        self.places, self.targets = set(), set()
        self.feed(page)

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.places.update(attributes[name] for name in ("id", "name")
                           if name in attributes)
        self.targets.update(attributes[name] for name in ("href", "src")
                            if name in attributes)


def commands(folder):
    """What Doxygen has taken for text."""
    for path in sorted(folder.glob("*.html")):
        text = re.sub(r"<(code|pre|tt)\b.*?</\1>", "",
                      path.read_text(encoding="utf-8"), flags=re.DOTALL)
        for command in re.findall(r"[@\\](?:image|ref|par|param|copydoc|link)\b",
                                  text):
            yield f"{path.name} shows the command {command}"


def dead_links(folder):
    pages = {path.name: Links(path.read_text(encoding="utf-8"))
             for path in folder.glob("*.html")}
    for name, page in sorted(pages.items()):
        for target in sorted(page.targets):
            url = urllib.parse.urlsplit(target)
            if url.scheme in ("http", "https", "mailto", "javascript"):
                continue
            path = urllib.parse.unquote(url.path) or name
            if not (folder / path).exists():
                yield f"{name} links to {target}, which is not there"
            elif url.fragment and path in pages and (
                    url.fragment not in pages[path].places):
                yield f"{name} links to {target}, a place that is not there"


def main():
    html_folder, xml_folder, *lists = sys.argv[1:]
    names, complaints = explained(pathlib.Path(xml_folder))
    functions = exported(lists)
    complaints += [f"{name} is exported, but not explained"
                   for name in sorted(functions - names)]
    complaints += dead_links(pathlib.Path(html_folder))
    complaints += commands(pathlib.Path(html_folder))
    if not functions or not names:
        complaints.append("there is nothing to look at")
    print("\n".join(complaints) or
          f"{len(functions)} functions are explained; no link is dead")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
