# For the self-tests of what cmake/BuildFlags.cmake decides: a copy of the source
# by links, with a cmake/ of its own. To be read by `.` after self_test.sh, where
# `cmake`, `compiler` and `source` are set.
# shellcheck shell=sh disable=SC2154  # self_test.sh sets `work`, its reader more

mkdir "$work/source"
for entry in "$source"/*; do
  ln -s "$entry" "$work/source"
done
rm "$work/source/cmake"
cp -r "$source/cmake" "$work/source"

# breaks WHAT MESSAGE SED: with BuildFlags.cmake changed so, the test must fail.
breaks() {
  sed "$3" "$source/cmake/BuildFlags.cmake" \
    > "$work/source/cmake/BuildFlags.cmake"
  must_fail "$1" "$2" "$0" "$cmake" "$compiler" "$work/source" "$work/work"
}
