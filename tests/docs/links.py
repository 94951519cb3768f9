"""links.py TOP
Fails unless each relative link of each Markdown file below TOP leads to a file
or folder there and, if it has an #anchor, to a heading of that file."""
import os
import sys

import documents


def fault(top, document, target):
    """What is wrong with a link, or None."""
    path, _, anchor = target.partition("#")
    if path.startswith("/"):
        return "is no relative link"
    place = os.path.join(top, os.path.dirname(document), path)
    if not path:
        place = os.path.join(top, document)
    if not os.path.exists(place):
        return "leads nowhere"
    if os.path.relpath(place, top).startswith(".."):
        return "leads out of the project"
    if anchor and anchor not in documents.anchors(place):
        return "leads to no heading"
    return None


def main(top):
    count = 0
    faults = 0
    for document in documents.markdown_files(top):
        for section in documents.sections(
                documents.read(os.path.join(top, document))):
            texts = [x for x in section.parts if isinstance(x, str)]
            for target in documents.links("\n\n".join(
                    [section.heading] + texts)):
                if "://" in target or target.startswith("mailto:"):
                    continue
                count += 1
                wrong = fault(top, document, target)
                if wrong:
                    print(f"{document}: {target} {wrong}")
                    faults += 1
    print(f"{count} links")
    return 0 if count and not faults else 1


sys.exit(main(*sys.argv[1:]))
