"""What the checks of the documents share: which documents there are, and what
stands in one: headings, code blocks, links."""
import os
import re

_FENCE = re.compile(r"^( {0,3})(`{3,}|~{3,})\s*(\S*)")
_HEADING = re.compile(r"^#{1,6} +(.*?) *#* *$")
_ITEM = re.compile(r"^( *)([-*+]|\d+[.)]) +")
_LINK = re.compile(r"!?\[(?:[^\[\]]|\[[^\]]*\])*\]\(\s*<?([^)\s>]+)[^)]*\)")


class Block:
    """A code block: where it begins, its language or "", and its lines without
    the indentation that all of them have."""

    def __init__(self, line, language, lines):
        self.line = line
        self.language = language
        while lines and not lines[-1].strip():
            lines = lines[:-1]
        margins = [len(x) - len(x.lstrip()) for x in lines if x.strip()]
        self.lines = [x[min(margins, default=0):].rstrip() for x in lines]


class Section:
    """A heading with all that stands below it. `parts` are paragraphs as strings
    and blocks, in order."""

    def __init__(self, heading):
        self.heading = heading
        self.parts = []


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read().splitlines()


def markdown_files(top):
    """The project's documents, as paths relative to `top`."""
    for folder, folders, files in os.walk(top):
        folders[:] = sorted(x for x in folders
                            if not x.startswith(".") and
                            (folder != top or x != "build"))
        for name in sorted(files):
            if name.endswith(".md"):
                yield os.path.relpath(os.path.join(folder, name), top)


def sections(lines):
    """The sections of a Markdown text, the first of which may have no heading."""
    found = [Section("")]
    paragraph = []
    deep = 4  # the indentation that makes code, more within a list

    def end_paragraph():
        if paragraph:
            found[-1].parts.append("\n".join(paragraph))
            paragraph.clear()

    at = 0
    while at < len(lines):
        line = lines[at]
        fence = _FENCE.match(line)
        if fence:
            end_paragraph()
            end = at + 1
            while end < len(lines) and not lines[end].strip().startswith(
                    fence.group(2)):
                end += 1
            found[-1].parts.append(
                Block(at + 1, fence.group(3), lines[at + 1:end]))
            at = end + 1
            continue
        if not paragraph and line.strip() and line.startswith(" " * deep):
            end = at
            while end < len(lines) and (not lines[end].strip() or
                                        lines[end].startswith(" " * deep)):
                end += 1
            found[-1].parts.append(Block(at + 1, "", lines[at:end]))
            at = end
            continue
        heading = _HEADING.match(line)
        item = _ITEM.match(line)
        if heading:
            end_paragraph()
            deep = 4
            found.append(Section(heading.group(1)))
        elif not line.strip():
            end_paragraph()
        else:
            if item:
                deep = item.end() + 4
            elif not paragraph and not line.startswith(" "):
                deep = 4
            paragraph.append(line)
        at += 1
    end_paragraph()
    return found


def comment_blocks(lines):
    """The code blocks in the `///` comments of a header: what stands between
    ``` and ```, or @code and @endcode, or indented behind an empty line."""
    found = []
    at = 0
    while at < len(lines):
        if not lines[at].strip().startswith("///"):
            at += 1
            continue
        first = at
        comment = []
        while at < len(lines) and lines[at].strip().startswith("///"):
            comment.append(lines[at].strip()[3:].removeprefix(" "))
            at += 1
        inside = None
        indented = []
        after_blank = False
        for number, text in enumerate(comment + [""], first + 1):
            word = text.strip()
            if inside is not None:
                if word in ("```", "@endcode"):
                    found.append(Block(number - len(inside), "cpp", inside))
                    inside = None
                else:
                    inside.append(text)
                continue
            if text.startswith("    ") and (after_blank or indented):
                indented.append(text)
            elif indented and word:
                found.append(Block(number - len(indented), "cpp", indented))
                indented = []
            elif indented:
                indented.append(text)
            if word.startswith(("```", "@code")):
                inside = []
            after_blank = not word
        if indented:
            found.append(Block(at - len(indented) + 2, "cpp", indented))
    return found


def links(part):
    """The targets of a paragraph's links. Code has none."""
    return _LINK.findall(re.sub(r"(`+)[^`].*?\1", "", part, flags=re.DOTALL))


def anchors(path):
    """The anchors of a document's headings, as hosts of Git repositories make
    them."""
    found = set()
    for section in sections(read(path)):
        text = _LINK.sub(lambda m: m.group(0)[1:].split("]")[0],
                         section.heading)
        name = re.sub(r"[^\w\- ]", "", text.lower()).replace(" ", "-")
        unique = name
        count = 0
        while unique in found:
            count += 1
            unique = f"{name}-{count}"
        found.add(unique)
    return found - {""}
