"""Gives Doxygen a page of the handbook as it can read it. In the tree a page may
link to a folder or to a file that is no page; in the reference that is a name
without a link. A link to a page or to a heading becomes one to a label, which
that gets: Doxygen can't follow the names of files in every folder.

usage: page_links.py PAGE
"""

import os
import re
import sys

PAGES = ("README.md", "CHANGELOG.md", "SECURITY.md")


def _label(page, anchor=""):
    """A label for a page, or one that no other page has for an anchor in it."""
    name = os.path.splitext(os.path.basename(page))[0].lower()
    if not anchor and name == "readme":
        return "index"  # Doxygen's name for the front page
    return f"{name}_{anchor or 'page'}".replace("-", "_")


def _link(match, page, top):
    text, target = match.groups()
    if re.match(r"[a-z]+:", target):
        return match[0]
    path, _, anchor = target.partition("#")
    path = os.path.relpath(os.path.join(os.path.dirname(page), path)
                           if path else page, top)
    if path in PAGES or re.fullmatch(r"docs/[^/]*\.md", path):
        return f"[{text}](#{_label(path, anchor)})"
    return match[0] if path.endswith(".svg") else text


def _labelled(text, page):
    """The text with a label behind each heading."""
    lines = text.split("\n")
    in_code = False
    for number, line in enumerate(lines):
        in_code ^= line.startswith("```")
        heading = re.fullmatch("#+ (.*)", line)
        if number == 0 and heading:
            lines[0] += f" {{#{_label(page)}}}"
        elif heading and not in_code:
            # As hosts of Git repositories make an anchor of it.
            anchor = re.sub(r"[^\w -]", "", heading[1].lower())
            label = _label(page, anchor.replace(" ", "-"))
            lines[number] += f" {{#{label}}}"
    return "\n".join(lines)


def main():
    page = os.path.abspath(sys.argv[1])
    top = os.path.dirname(os.path.dirname(os.path.dirname(
        os.path.abspath(__file__))))
    with open(page, encoding="utf-8") as file:
        text = file.read()
    if os.path.basename(page) != "README.md":
        text = _labelled(text, page)
    # Doxygen takes the text of a picture from one line only.
    text = re.sub(r"!\[[^][]*\]", lambda match: match[0].replace("\n", " "),
                  text)
    sys.stdout.write(re.sub(r"(?<!!)\[([^][]*)\]\(([^()\s]+)\)",
                            lambda match: _link(match, page, top), text))


if __name__ == "__main__":
    main()
