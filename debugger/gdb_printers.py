"""Shows korvan's objects in GDB, where `print` gives bare memory otherwise.

GDB loads this file with the library, or by `source`; docs/gdb.md says when.
Nothing here calls a function of the program or needs the printers of another
library. What GDB looks at may be uninitialised or overwritten: each printer
reads a bounded part of it, and shows UNREADABLE for what can't be read.
"""

import itertools

import gdb
import gdb.printing

UNREADABLE = "<unreadable>"
# The most that is shown where GDB is set to show all, `print elements 0`.
MOST = 10000
# No red-black tree of 2^64 nodes is deeper.
DEEPEST = 128


def attempt(show, what):
    """What `show` makes of `what`, which may be unreadable."""
    try:
        return show(what)
    except gdb.error:
        return UNREADABLE


def limit():
    """How many characters or bytes of an object are shown."""
    return min(gdb.print_options().get("max_elements") or MOST, MOST)


def quoted(value):
    """A text as GDB shows it, without its address."""
    return value.format_string(address=False, symbols=False,
                               max_elements=limit(), repeat_threshold=0)


def terminated(pointer):
    """The text up to a NUL."""
    return quoted(pointer) if int(pointer) else "null"


def string(value):
    """The text of a std::string or std::wstring, as libstdc++ lays it out."""
    first = value["_M_dataplus"]["_M_p"]
    length = int(value["_M_string_length"])
    shown = min(length, limit())
    character = first.type.strip_typedefs().target()
    if shown == 0:
        return '""' if character.sizeof == 1 else 'L""'
    characters = character.array(0, shown - 1)
    text = quoted(first.cast(characters.pointer()).dereference())
    return text + "..." if shown < length else text


def object_at(pointer):
    """What stands there; read at once, for GDB would show an error later."""
    value = pointer.dereference()
    value.fetch_lazy()
    return value


def in_hex(data, count):
    """The first of `count` bytes."""
    shown = min(count, limit())
    if shown == 0:
        return ""
    memory = gdb.selected_inferior().read_memory(int(data), shown)
    text = memory.tobytes().hex(" ")
    return text + " ..." if shown < count else text


def words(blob):
    """The 32-bit words in a CRYPT_DATA_BLOB."""
    size = int(blob["cbData"])
    shown = min(size // 4, limit())
    first = blob["pbData"].cast(blob["cbData"].type.pointer())
    texts = [in_hexadecimal(first[i]) for i in range(shown)]
    if shown * 4 < size:
        texts.append("...")
    return "{" + ", ".join(texts) + "}"


def entries(tree_map):
    """Pointers to the names and the objects in a std::map of libstdc++."""
    tree = tree_map["_M_t"]["_M_impl"]
    map_type = tree_map.type.strip_typedefs()
    name = map_type.template_argument(0).pointer()
    pointer = map_type.template_argument(1).pointer()
    to_come = int(tree["_M_node_count"])
    node = tree["_M_header"]["_M_parent"]
    above = []
    while node or above:
        if node:
            to_come -= 1
            if to_come < 0 or len(above) == DEEPEST:
                raise gdb.error("these nodes are no tree")
            above.append(node)
            node = node["_M_left"]
        else:
            node = above.pop()
            first = (node + 1).cast(name)
            yield first, (first + 1).cast(pointer).dereference()
            node = node["_M_right"]
    if to_come != 0:
        raise gdb.error("nodes are missing")


def map_children(tree_map, show):
    """The names in a map, each with what `show` makes of its object."""
    try:
        shown = itertools.islice(entries(tree_map), MOST)
        for i, (name, pointer) in enumerate(shown):
            # Development environments need children of different names.
            yield f"name {i}", attempt(string, name)
            yield f"object {i}", attempt(show, pointer)
    except gdb.error:
        yield "name", "..."
        yield "object", UNREADABLE


def counted(tree_map, what):
    """Such as "1 section" or "2 sections"."""
    count = int(tree_map["_M_t"]["_M_impl"]["_M_node_count"])
    return f"{count} {what}" if count == 1 else f"{count} {what}s"


def in_hexadecimal(number):
    return f"0x{int(number):X}"


class Printer:
    """What all printers are."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        """Nothing before the children, which printers of others ask for, too."""
        return None


class Document(Printer):
    """CIniFileA and CIniFileW: the sections by their names."""

    def display_hint(self):
        return "map"

    def to_string(self):
        return attempt(self.summary, self.value)

    def summary(self, value):
        return "document with " + counted(value["sections_"], "section")

    def children(self):
        return map_children(self.value["sections_"], object_at)


class Section(Printer):
    """CIniSectionA and CIniSectionW: the keys' values by their names."""

    def display_hint(self):
        return "map"

    def to_string(self):
        name = attempt(string, self.value["name_"])
        return f"section {name} with {attempt(self.size, self.value)}"

    def size(self, value):
        return counted(value["keys_"], "key")

    def children(self):
        return map_children(self.value["keys_"],
                            lambda key: string(key["value_"]))


class Key(Printer):
    """CIniKeyA and CIniKeyW, without the section that owns the key."""

    def children(self):
        for member in ("name_", "value_"):
            yield member, attempt(string, self.value[member])


class OidRecord(Printer):
    """COidData. A name that is not loaded is the number of its text."""

    def children(self):
        value = self.value
        yield "pszOID", attempt(terminated, value["pszOID"])
        yield "pwszName", attempt(self.name, value["pwszName"])
        yield "dwGroupId", value["dwGroupId"]
        yield "Algid", attempt(in_hexadecimal, value["Algid"])
        yield "ExtraInfo", attempt(words, value["ExtraInfo"])
        for member in ("pwszCNGAlgid", "pwszCNGExtraAlgid"):
            yield member, attempt(terminated, value[member])
        yield "dwOidFlags", attempt(self.flags, value["dwOidFlags"])

    def name(self, pointer):
        number = int(pointer)
        if 0 < number < 0x10000:
            return f"text {number}"
        return terminated(pointer)

    def flags(self, value):
        names = ((0x1, "marked"), (0x2, "name loaded"))
        told = ", ".join(name for bit, name in names if int(value) & bit)
        text = in_hexadecimal(value)
        return f"{text} ({told})" if told else text


class OidTable(Printer):
    """OID_TABLE_INFO: the records of one group."""

    def display_hint(self):
        return "array"

    def to_string(self):
        return attempt(self.summary, self.value)

    def summary(self, value):
        count = int(value["cRecords"])
        what = "record" if count == 1 else "records"
        return f"group {int(value['dwGroupId'])} with {count} {what}"

    def children(self):
        first = self.value["rgRecords"]
        for i in range(min(int(self.value["cRecords"]), MOST)):
            record = attempt(object_at, first + i)
            yield f"[{i}]", record
            if record is UNREADABLE:
                break


class KeyBlob(Printer):
    """PUBLICKEYSTRUC, with the rest of the header where it is a key blob's."""

    def children(self):
        value = self.value
        yield "bType", attempt(self.kind, value["bType"])
        yield "bVersion", attempt(in_hexadecimal, value["bVersion"])
        yield "reserved", value["reserved"]
        yield "aiKeyAlg", attempt(in_hexadecimal, value["aiKeyAlg"])
        rest = attempt(self.rest, value)
        if rest is not UNREADABLE and int(rest[0]) == 0x3147414D:
            yield "magic", '"MAG1"'
            yield "bitLen", rest[1]

    def kind(self, value):
        text = in_hexadecimal(value)
        return f"{text} (PUBLICKEYBLOB)" if int(value) == 0x06 else text

    def rest(self, value):
        if value.address is None:
            return UNREADABLE
        numbers = value["aiKeyAlg"].type.array(1).pointer()
        return object_at((value.address + 1).cast(numbers))


class Bytes(Printer):
    """IdentObj."""

    def to_string(self):
        return attempt(self.shown, self.value)

    def shown(self, value):
        length = int(value["length"])
        size = "1 byte" if length == 1 else f"{length} bytes"
        shown = in_hex(value["data"], length)
        return f"{size}: {shown}" if shown else size


def ours(printer, members):
    """The printer, for types that have these members, pointers where they end
    in "*". A host may have types of the same name that are not ours."""
    def printer_of(value):
        fields = {field.name: field.type for field in
                  value.type.strip_typedefs().fields()}
        for member in members.split():
            name = member.rstrip("*")
            if name not in fields or (member != name and fields[
                    name].strip_typedefs().code != gdb.TYPE_CODE_PTR):
                return None
        return printer(value)
    return printer_of


def register(objfile):
    """Has GDB use these printers, once however often this file is loaded."""
    printers = gdb.printing.RegexpCollectionPrettyPrinter("korvan")
    for pattern, printer in (
            ("korvan::CIniFile[AW]", Document),
            ("korvan::CIniFile[AW]::CIniSection[AW]", Section),
            ("korvan::CIniFile[AW]::CIniSection[AW]::CIniKey[AW]", Key),
            ("korvan::COidData", OidRecord),
            ("korvan::OID_TABLE_INFO", OidTable),
            ("_PUBLICKEYSTRUC",
             ours(KeyBlob, "bType bVersion reserved aiKeyAlg")),
            ("IdentObj", ours(Bytes, "length data*"))):
        printers.add_printer(pattern, f"^{pattern}$", printer)
    gdb.printing.register_pretty_printer(objfile, printers, replace=True)


register(gdb.current_objfile())
