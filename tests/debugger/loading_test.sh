#!/bin/sh
# loading_test.sh [--self-test] CMAKE BUILD_DIR WORK_DIR LIBDIR DATADIR GDB
#   PROGRAM
# Installs the library and what programs are built with. A GDB that looks below
# the same prefix loads the printers with the library; by `source` they are
# loaded, too, wherever the tree was moved to. LIBDIR and DATADIR are relative
# folders.
set -eu
if [ "$1" = --self-test ]; then
  cmake=$2 build=$3 libdir=$5 data=$6 gdb=$7 program=$8
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # with WHAT MESSAGE SCRIPT: another cmake, which does SCRIPT in the folder that
  # it has installed to.
  with() {
    fake cmake "'$cmake' \"\$@\" && cd \"\$4\" && $3"
    must_fail "$1" "$2" "$0" "$work/cmake" "$build" "$work/tree" "$libdir" \
      "$data" "$gdb" "$program"
  }
  must_pass "nothing broken" "$0" "$cmake" "$build" "$work/tree" "$libdir" \
    "$data" "$gdb" "$program"
  with "printers named for another version" 'not loaded with the library' \
    "find . -name '*-gdb.py' -exec mv {} {}.py ';'"
  with "no printers to load by hand" 'not loaded by source' \
    "rm -f '$data/korvan/gdb_printers.py'"
  with "a library that GDB can't have loaded" 'another library' \
    "find . -name 'libkorvan.so.1' -exec rm {} ';'"
  end_self_test
fi
cmake=$1 build=$2 work=$3 libdir=$4 data=$5 gdb=$6 program=$7
rm -rf "$work"
mkdir -p "$work"
work=$(cd "$work" && pwd -P)

# shows WHAT TREE OPTION...: GDB shows a key that it has the printers for, in the
# program with the library of the tree.
shows() {
  what=$1 tree=$2
  shift 2
  LD_LIBRARY_PATH=$tree/$libdir "$gdb" -nx -batch \
    -iex 'set debuginfod enabled off' "$@" -ex 'break Stop' -ex run \
    -ex 'info sharedlibrary libkorvan' -ex 'print *key' "$program" \
    > "$work/out" 2>&1 < /dev/null || :
  if ! grep -q "$tree/$libdir/libkorvan\.so" "$work/out"; then
    cat "$work/out"
    echo "the program has loaded another library"
    exit 1
  fi
  if ! grep -q -F -x "\$1 = {name_ = \"[Type\", value_ = \"75\"}" "$work/out"; then
    cat "$work/out"
    echo "the printers were not loaded $what"
    exit 1
  fi
}
for component in runtime development; do
  "$cmake" --install "$build" --prefix "$work/installed" \
    --component "$component" > /dev/null
done
folder=$work/installed/$data/gdb/auto-load
shows "with the library" "$work/installed" \
  -iex "add-auto-load-scripts-directory $folder" \
  -iex "add-auto-load-safe-path $folder"

mv "$work/installed" "$work/moved"
shows "by source" "$work/moved" \
  -ex "source $work/moved/$data/korvan/gdb_printers.py"
