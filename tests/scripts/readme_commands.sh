#!/bin/sh
# readme_commands.sh [--self-test] README TEST_BARE
# Fails unless TEST_BARE runs exactly the commands that README shows.
set -eu
if [ "$1" = --self-test ]; then
  readme=$2 test_bare=$3
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  must_pass "nothing broken" "$0" "$readme" "$test_bare"
  sed 's/--prefix .usr.local/--prefix \/opt/' "$readme" > "$work/changed"
  must_fail "a command that was changed" '^< .*--prefix /opt' \
    "$0" "$work/changed" "$test_bare"
  sed '/^    ldconfig$/d' "$readme" > "$work/less"
  must_fail "a command that README lost" '^> ldconfig$' \
    "$0" "$work/less" "$test_bare"
  (cat "$readme"; echo '    cmake --preset new') > "$work/more"
  must_fail "a command that nobody runs" '^< cmake --preset new$' \
    "$0" "$work/more" "$test_bare"
  must_fail "no commands at all" 'README shows no commands' \
    "$0" /dev/null /dev/null
  end_self_test
fi
readme=$1 test_bare=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Commands stand indented by four blanks. Lines with three dots have a part
# that the reader fills in, and a comment may follow two blanks.
sed -n 's/^    \(\(apt-get\|cmake\|g++\|ldconfig\|\.\/\|scripts\/\).*\)/\1/p' \
  "$readme" | grep -v '\.\.\.$' | sed 's/  *# .*//' | sort > "$work/readme" ||
  true
sed -n "s/^ *readme '\\(.*\\)'\$/\\1/p" "$test_bare" | sort > "$work/run"
[ -s "$work/readme" ] || { echo "README shows no commands"; exit 1; }
diff "$work/readme" "$work/run" ||
  { echo "< README.md shows, > scripts/test-bare runs"; exit 1; }
