"""What is mutated, and which tests judge it."""

import dataclasses
import pathlib


@dataclasses.dataclass(frozen=True)
class Folder:
    sources: tuple      # patterns of files
    programs: tuple     # test programs, which are targets of CMake and tests
    suites: tuple = ()  # of programs whose cases are a test of CTest each
    costs: tuple = ()   # programs of bench/cost that count its instructions


@dataclasses.dataclass(frozen=True)
class Round:
    """One way to run a folder's tests. A mutant that survives one round meets
    the next."""
    build: str              # folder; rounds may share it
    configure: tuple        # arguments of CMake
    lacks: tuple = ()       # programs that this build does not have
    suffix: str = ""        # of the names of the tests that are run
    limits_memory: bool = True
    # Whether it compares instructions with those without a mutant, and runs no
    # tests.
    counts_costs: bool = False


@dataclasses.dataclass(frozen=True)
class Project:
    root: pathlib.Path
    folders: dict
    rounds: tuple
    accepted: pathlib.Path


# A mutant must compile in spite of a warning, and link no program anew. The
# default limit of GCC lets an endless constant expression run for minutes.
_MUTABLE = ("-DKORVAN_WARNINGS_AS_ERRORS=OFF",
            "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
            "-DCMAKE_CXX_FLAGS=-fconstexpr-ops-limit=12000000")
# Without symbols, libraries of the same bytes are libraries of the same code.
_RELEASE = ("--preset", "dev", "-DCMAKE_BUILD_TYPE=Release",
            "-DCMAKE_SHARED_LINKER_FLAGS=-s", *_MUTABLE)

KORVAN = Project(
    root=pathlib.Path(__file__).resolve().parents[2],
    accepted=pathlib.Path(__file__).with_name("accepted.txt"),
    rounds=(
        Round("release", _RELEASE),
        # A mutant that is slower, or faster. This round takes seconds, the
        # others minutes.
        Round("release", _RELEASE, limits_memory=False, counts_costs=True),
        Round("release", _RELEASE, suffix="_under_valgrind"),
        # The sanitizers reserve more memory than any limit allows. What takes
        # all memory has failed in the first round.
        Round("asan",
              ("--preset", "asan", "-DCMAKE_CXX_COMPILER=g++", *_MUTABLE),
              lacks=("oid_fork_test",), limits_memory=False),
    ),
    folders={
        "oid": Folder(
            sources=("oid/*.cc", "oid/*.h", "oid/tables/*.inc"),
            programs=("oid_tables_test", "oid_lookup_test", "oid_names_test",
                      "oid_model_test", "oid_allocation_test",
                      "oid_threads_test", "oid_host_strings_test",
                      "oid_own_records_test", "oid_fork_test",
                      "oid_first_use_test", "odd_host_test",
                      "allocations_test", "placement_test"),
            suites=("OidNames", "OidNamesOfOwnRecords", "OidSearches",
                    "OidAllocation", "OidThreads", "OidHostStrings"),
            costs=("oid_cost", "load_cost")),
        "ini": Folder(
            sources=("ini/*.cc", "ini/*.h", "ini/*.inc"),
            programs=(
                *(f"{width}_{name}"
                  for width in ("narrow", "wide")
                  for name in ("ini_document_test", "ini_editing_test",
                               "ini_editing_model_test", "ini_reader_test",
                               "ini_reader_model_test", "ini_writer_test",
                               "ini_file_test", "ini_stream_area_test",
                               "ini_allocation_test", "ini_key_run_test",
                               "ini_stream_faults_test",
                               "ini_file_faults_test", "ini_placement_test",
                               "trim_test")),
                "narrow_ini_numbers_test", "narrow_ini_refused_write_test",
                "narrow_ini_long_line_test", "narrow_ini_read_error_test",
                "wide_ini_wide_reader_test", "wide_ini_broken_order_test",
                "ini_twins_test", "ini_name_order_test",
                "ini_encoding_test",
                "text_conversion_test", "allocations_test",
                "locale_switches_test"),
            costs=("ini_cost",)),
        "pubkey": Folder(
            sources=("pubkey/*.cc", "pubkey/*.h"),
            programs=("key_conversion_test", "key_conversion_on_host_test",
                      "key_round_trip_test", "key_conversion_properties_test",
                      "key_conversion_threads_test", "allocations_test",
                      "placement_test"),
            costs=("pubkey_cost",)),
        "resources": Folder(
            sources=("resources/*.cc", "resources/*.h"),
            programs=("load_string_test",), costs=("oid_cost",)),
        "platform": Folder(
            sources=("platform/*.cc",),
            programs=("asn1_record_test", "last_error_test"),
            costs=("pubkey_cost",)),
    })
