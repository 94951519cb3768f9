#!/bin/sh
# installed_test.sh [--self-test] CMAKE BUILD_DIR WORK_DIR DOCUMENT BINDIR MANDIR
#   DATADIR PROGRAM...
# Installs the component `tools` alone, then all, and moves that: the programs
# run where they are then, with the library beside them, and keep what all
# programs promise. The folders are relative ones below the prefix, PROGRAM is a
# name.
set -eu
if [ "$1" = --self-test ]; then
  cmake=$2 build=$3 document=$5 bin=$6 man=$7 data=$8
  shift 8
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  # with WHAT MESSAGE SCRIPT: another cmake, which gets --install BUILD_DIR
  # --prefix FOLDER.
  with() {
    fake cmake "'$cmake' \"\$@\"; folder=\$4
$3"
    shift 3
    must_fail "$what" "$message" "$0" "$work/cmake" "$build" "$work/tree" \
      "$document" "$bin" "$man" "$data" "$@"
  }
  broken() {
    what=$1 message=$2
    with "$@"
  }
  broken "a file more" '^>.*/more' "echo > \"\$folder/$bin/more\"" "$@"
  broken "no manual page" '^<.*man1' "rm \"\$folder/$man/man1/$1.1\"" "$@"
  broken "no completion" '^<.*bash-completion' \
    "rm -r \"\$folder/$data/bash-completion\"" "$@"
  broken "another program" 'Usage' \
    "printf '#!/bin/sh\n' > \"\$folder/$bin/$1\"" "$@"
  broken "a library that is not installed" 'cannot open shared object' \
    "rm -f \"\$folder\"/lib*/libkorvan* \"\$folder\"/lib/*/libkorvan*" "$@"
  end_self_test
fi
cmake=$1 build=$2 work=$3 document=$4 bin=$5 man=$6 data=$7
shift 7
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"

"$cmake" --install "$build" --prefix "$work/alone" --component tools > /dev/null
for program; do
  printf '%s\n' "./$bin/$program" "./$man/man1/$program.1" \
    "./$data/bash-completion/completions/$program"
done | sort > "$work/wanted"
# CMake's description of the programs is its own affair.
(cd "$work/alone" && find . -type f ! -name 'korvan-tools-targets*.cmake') |
  sort | diff "$work/wanted" - ||
  { echo "< belongs to the component tools, > is installed"; exit 1; }

"$cmake" --install "$build" --prefix "$work/installed" > /dev/null
mv "$work/installed" "$work/moved"
unset LD_LIBRARY_PATH
for program; do
  "$here/every_tool_test.sh" "$work/moved/$bin/$program" \
    "$work/moved/$man/man1/$program.1" \
    "$work/moved/$data/bash-completion/completions/$program" "$document"
  "$work/alone/$bin/$program" --version > "$work/out" 2>&1 &&
    { echo "without the library $program runs on $(ldd "$work/alone/$bin/$program")"
      exit 1; }
  grep -q 'libkorvan' "$work/out" || { cat "$work/out"; exit 1; }
done
