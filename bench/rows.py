"""The rows of the tables that scripts/bench prints: which benchmarks there are,
what they are called in plain words, and what the least is that they are held
against.

A FLOOR is work that no code can leave out, so nothing can be faster: the report
fails if the library is. A YARDSTICK is work that says something about the
figure beside it, but that cleverer code may do without.
"""

from dataclasses import dataclass


@dataclass(frozen=True)
class Row:
    name: str  # of the benchmarks: name/competitor
    title: str
    floor: str = None  # what it does: a key of FLOORS
    yardstick: str = None  # the same, of YARDSTICKS
    line: str = None  # the line of the second plot that it is a point of
    keys: int = None  # in the document: where on that line
    keys_each: int = 1  # of which one operation is made


@dataclass(frozen=True)
class Section:
    title: str
    rows: tuple


@dataclass(frozen=True)
class Table:
    title: str
    sections: tuple


# What is done, and what the floor of it does.
FLOORS = {
    "compare": ("Look up an OID, a name, an ALG_ID or a pair that is there",
                "the key is compared once, byte for byte, with a copy of it"),
    "text": ("Copy a text by its number",
             "64 bytes are copied, no text has more"),
    "blob": ("Turn a public key into a key blob",
             "the blob is allocated and copied"),
    "key": ("Turn a key blob into a public key",
            "key and parameters are allocated and copied"),
    "sizes": ("Ask a blob for the sizes of its parts",
              "both are computed from one word of the header"),
    "find": ("Read a key",
             "names and value are copied; each name is compared once"),
    "overwrite": ("Overwrite a key",
                  "names and value are copied; each name is compared once; the "
                  "value is moved to its place"),
    "add": ("Add a key",
            "names and value are copied; the key's object and map entry are "
            "made, in a known place"),
    "remove": ("Remove a key",
               "names are copied; the section's is compared once; an object "
               "and a map entry are destroyed"),
    "rename": ("Rename a key",
               "names are copied; the old ones are compared once; a map entry "
               "is taken out and put back, in a known place"),
    "load": ("Load from memory",
             "maps and objects are made, of texts that are cut and in order"),
    "load_file": ("Load from a file",
                  "the file is read, then as from memory"),
    "save_file": ("Save to a file",
                  "the file is opened, emptied and written, from a text that "
                  "is ready"),
    "skipped": ("Load skipped lines from memory",
                "one word of each cache line is read"),
    "long_line": ("Load a long line from memory",
                  "the value is copied to a new string"),
    "memory": ("Memory for a key", "maps and objects, and nothing else"),
    "library": ("Load and unload the library",
                "a shared library with nothing in it is loaded and unloaded"),
    "names": ("Load all names", "all names are allocated and copied"),
}

YARDSTICKS = {
    "wcscasecmp": ("Look up a name",
                   "one wcscasecmp with the right name, or the nearly right "
                   "one"),
    "nearly": ("Look up an OID that is missing",
               "the key is compared with the OID that it nearly is"),
    "mbedtls": ("Turn a public key into a key blob",
                "mbedTLS reads the key's tag and length; the blob is allocated "
                "and copied"),
    "openssl": ("Turn a key blob into a public key",
                "OpenSSL writes the key's tag and length; key and parameters "
                "are allocated and copied"),
    "list": ("List all keys",
             "the same walk, over maps and objects that were made in order"),
    "save": ("Save to memory",
             "the same walk; all texts are copied to one buffer"),
    "destroy": ("Destroy a document",
                "the same maps and objects, made in order, are destroyed"),
    "skipped_file": ("Load skipped lines from a file",
                     "the file is read in blocks of 64 KiB and not looked at"),
    "long_line_file": ("Load a long line from a file",
                       "the file is read in blocks of 64 KiB; each is copied "
                       "to a new string"),
}


# The competitors, in the order of the tables' columns.
COMPETITORS = ("ours", "floor", "yardstick", "plain maps", "linear search",
               "std hash map", "Abseil", "gperf", "OpenSSL", "GnuTLS", "NSS",
               "Botan", "GLib", "SimpleIni", "Boost ptree", "inih")


# The operations on INI documents: title, floor, yardstick. The braces stand
# for the content.
_INI = {
    "find": ("Read one of {}", "find", None),
    "overwrite": ("Overwrite one of {}", "overwrite", None),
    "add": ("Add one key to {}", "add", None),
    "remove": ("Remove one of {}", "remove", None),
    "rename": ("Rename one of {}", "rename", None),
    "list": ("List {}", None, "list"),
    "load": ("Load {} from memory", "load", None),
    "load_file": ("Load {} from a file", "load_file", None),
    "save": ("Save {} to memory", None, "save"),
    "save_file": ("Save {} to a file", "save_file", None),
    "destroy": ("Destroy {}", None, "destroy"),
    "memory_held": ("Memory for one of {}, loaded", "memory", None),
    "memory_peak": ("Memory for one of {}, at most", "memory", None),
}


def _content(name):
    """"1000_in_50_shuffled" in words."""
    words, is_shuffled = name.removesuffix("_shuffled"), "_shuffled" in name
    keys, _, sections = words.partition("_in_")
    words = f"{int(keys):,}" + ("" if sections else " keys")
    if sections:
        words += f" keys in {int(sections):,} sections"
    return words + (" in random order" if is_shuffled else "")


def _ini(width, operation, content, line=None):
    title, floor, yardstick = _INI[operation]
    keys = int(content.split("_")[0])
    return Row(f"ini_{width}_{operation}_{content}",
               title.format(_content(content)), floor, yardstick, line, keys,
               keys if operation == "load" else 1)


def _everyday(width):
    many = "1000_in_50"
    return tuple(_ini(width, operation, content) for operation, content in (
        ("find", many), ("overwrite", many), ("add", many), ("remove", many),
        ("rename", many), ("list", many), ("load_file", "16"),
        ("load_file", many), ("save_file", many)))


def _few(width):
    return tuple(_ini(width, operation, "16") for operation in (
        "find", "overwrite", "add", "remove", "rename", "list", "load", "save",
        "save_file", "destroy"))


def _large(width):
    many = "1000_in_50"
    lines = (("load", "", "Load keys in order"),
             ("load", "_shuffled", "Load keys in random order"),
             ("find", "", "Read keys in random order"))
    sizes = [_ini(width, operation, f"{keys}{order}",
                  f"{line}, {width} text")
             for operation, order, line in lines
             for keys in (1000, 10_000, 100_000, 1_000_000)]
    return (
        _ini(width, "load_file", many + "_shuffled"),
        _ini(width, "load", many),
        _ini(width, "save", many),
        _ini(width, "destroy", many),
        *sizes,
        *(_ini(width, operation, content) for operation, content in (
            ("load", "1000000_in_1000"),
            ("load", "1000000_in_1000_shuffled"),
            ("load_file", "1000000"),
            ("save", "1000000"),
            ("save_file", "1000000"),
            ("destroy", "1000000"),
            ("destroy", "1000000_shuffled"))),
        Row(f"ini_{width}_load_skipped_100MB",
            "Load 100 MB of skipped lines from memory", "skipped"),
        Row(f"ini_{width}_load_file_skipped_100MB",
            "Load 100 MB of skipped lines from a file", None, "skipped_file"),
        Row(f"ini_{width}_load_line_64MB",
            "Load one line of 64 MiB from memory", "long_line"),
        Row(f"ini_{width}_load_file_line_64MB",
            "Load one line of 64 MiB from a file", None, "long_line_file"),
    )


TABLES = (
    Table("What programs do every day", (
        Section("OIDs", (
            Row("find_oid", "Look up one OID", "compare"),
        )),
        Section("Names, algorithm identifiers and texts", (
            Row("find_name", "Look up one name", "compare", "wcscasecmp"),
            Row("find_algid", "Look up one ALG_ID", "compare"),
            Row("find_pair", "Look up one pair of ALG_IDs", "compare"),
            Row("copy_text", "Copy one text by its number", "text"),
        )),
        Section("Public keys of 64 bytes", (
            Row("key_to_blob_64", "Turn a public key into a key blob", "blob",
                "mbedtls"),
            Row("blob_to_key_64", "Turn a key blob into a public key", "key",
                "openssl"),
        )),
        Section("INI documents, narrow text", _everyday("narrow")),
        Section("INI documents, wide text", _everyday("wide")),
    )),
    Table("Large and odd", (
        Section("OIDs", (
            Row("find_oid_missing", "Look up an OID that is missing", None,
                "nearly"),
            Row("find_oid_in_group", "Look up one OID in its group",
                "compare"),
        )),
        Section("OIDs that OpenSSL has too", (
            Row("find_oid_openssl", "Look up one OID", "compare"),
        )),
        Section("Names", (
            Row("find_name_any_case", "Look up a name in another case",
                "compare", "wcscasecmp"),
            Row("find_name_missing", "Look up a name that is missing", None,
                "wcscasecmp"),
        )),
        Section("Public keys", (
            Row("key_to_blob_128", "Turn a key of 128 bytes into a blob",
                "blob", "mbedtls"),
            Row("key_to_blob_270", "Turn an RSA key of 270 bytes into a blob",
                "blob", "mbedtls"),
            Row("blob_to_key_128", "Turn a blob into a key of 128 bytes",
                "key", "openssl"),
            Row("blob_to_key_270", "Turn a blob into an RSA key of 270 bytes",
                "key", "openssl"),
            Row("blob_to_key_sizes_64", "Ask a blob for the sizes of its parts",
                "sizes"),
        )),
        Section("Few keys, narrow text", _few("narrow")),
        Section("Few keys, wide text", _few("wide")),
        Section("More keys, narrow text", _large("narrow")),
        Section("More keys, wide text", _large("wide")),
        Section("Memory", tuple(
            _ini("narrow", operation, content)
            for operation in ("memory_held", "memory_peak")
            for content in ("1000000", "1000000_shuffled"))),
        Section("The library itself", (
            Row("load_library", "Load and unload the library", "library"),
            Row("load_all_names", "Load all names, by the first search",
                "names"),
        )),
    )),
)
