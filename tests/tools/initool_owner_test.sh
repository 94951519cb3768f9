#!/bin/sh
# initool_owner_test.sh [--self-test] INITOOL
# Fails unless a file that is changed keeps its owner. Only root may give a
# file to somebody else; others may give it to a group of theirs, if they have
# two. So this is a test of its own, which is skipped where it can't look.
set -eu

case $(id -u) in
  0) owner=12:34 ;;
  *)
    group=$(id -G | tr ' ' '\n' | grep -v -x "$(id -g)" | head -n 1)
    if [ -z "$group" ]; then
      echo "skipped: $(id -un) is not root, and has no second group"
      exit 77
    fi
    owner=$(id -u):$group
    ;;
esac

if [ "$1" = --self-test ]; then
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "the program as it is" "$0" "$2"
  # shellcheck disable=SC2016  # what the changed program does
  changed "$2" "a file that becomes the caller's" 'belongs to' \
    '"$real" "$@" && chown "$(id -u):$(id -g)" "$2"'
  must_fail "no program" 'exit status 127' "$0" "$work/none"
  end_self_test
fi
program=$1
# shellcheck source=tests/support/program_test.sh
. "$(dirname "$0")/../support/program_test.sh"

makes file.ini '[S]\n'
chown "$owner" file.ini
expect 0 '' '' set file.ini S '[k' v
holds file.ini '[S]\n[k=v\n'
[ "$(stat -c %u:%g file.ini)" = "$owner" ] ||
  fail "file.ini belongs to $(stat -c %u:%g file.ini), not to $owner"
