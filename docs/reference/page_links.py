"""Gives Doxygen a page of the handbook as it can read it. In the tree a page may
link to a folder or to a file that is no page; in the reference that is a name
without a link.

usage: page_links.py PAGE
"""

import os
import re
import sys

PAGES = ("README.md", "CHANGELOG.md", "SECURITY.md")


def _link(match, folder, top):
    text, target = match.groups()
    if re.match(r"[a-z]+:|#", target):
        return match[0]
    path, _, anchor = target.partition("#")
    path = os.path.relpath(os.path.join(folder, path), top)
    if path in PAGES or re.fullmatch(r"docs/[^/]*\.(md|svg)", path):
        return f"[{text}]({path}{'#' + anchor if anchor else ''})"
    return text


def main():
    page = sys.argv[1]
    folder = os.path.dirname(os.path.abspath(page))
    top = os.path.dirname(os.path.dirname(os.path.dirname(
        os.path.abspath(__file__))))
    with open(page, encoding="utf-8") as file:
        text = file.read()
    # Doxygen takes the text of a picture from one line only.
    text = re.sub(r"!\[[^][]*\]", lambda match: match[0].replace("\n", " "),
                  text)
    sys.stdout.write(re.sub(r"(?<!!)\[([^][]*)\]\(([^()\s]+)\)",
                            lambda match: _link(match, folder, top), text))


if __name__ == "__main__":
    main()
