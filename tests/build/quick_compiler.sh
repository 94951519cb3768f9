# What makes the self-tests of whole builds quick. To be read by `.`, after
# tests/support/self_test.sh.
# shellcheck shell=sh

# quick_compiler COMPILER SOURCE_DIR [SCRIPT]
# Makes $work/compiler a compiler that takes any source of the library for an
# empty one, and does SCRIPT before it compiles.
quick_compiler() {
  : > "${work:?}/empty.cc"
  fake compiler "for argument in \"\$@\"; do
      shift
      case \$argument in
        '$2'/tests/*) ;;
        '$2'/*.cc) argument='$work/empty.cc' ;;
      esac
      set -- \"\$@\" \"\$argument\"
    done
    ${3-}
    exec '$1' \"\$@\""
  # What it makes is nothing to keep.
  unset CMAKE_CXX_COMPILER_LAUNCHER
}
