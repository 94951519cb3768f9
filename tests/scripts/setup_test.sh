#!/bin/sh
# setup_test.sh [--self-test] SETUP
# Runs scripts/setup on a system that only seems to be there: dpkg-query,
# apt-get, id and sudo are scripts of this test's own.
set -eu
if [ "$1" = --self-test ]; then
  setup=$2
  # shellcheck source=tests/support/self_test.sh
  . "$(dirname "$0")/../support/self_test.sh"
  breaks() {  # breaks WHAT MESSAGE SED_SCRIPT
    sed "$3" "$setup" > "$work/setup"
    chmod +x "$work/setup"
    ! cmp -s "$setup" "$work/setup" || { echo "not broken: $1"; exit 1; }
    must_fail "$1" "$2" "$0" "$work/setup"
  }
  # shellcheck disable=SC2016  # sed's patterns, not the shell's
  {
    must_pass "nothing broken" "$0" "$setup"
    breaks "pending triggers taken for missing" '^called: apt-get' \
      's/ | triggers-pending//'
    breaks "no line to type" "not said: '^  apt-get install" \
      's/^  echo "  \$install" >&2$/  :/'
    breaks "CXX not looked at" 'g++ beside CXX' \
      's/if \[ -n "\${CXX:-}" \]/if false/'
    breaks "CC ignored silently" "not said: 'CC is not used'" \
      's/^  *say "CC is not used.*/:/'
    breaks "four packages for a demo" '^4 packages for a demo' \
      's/^demo="[^"]*/& a/'
    breaks "a group of no packages" '^nothing there, lint: status 0' \
      's/^lint="[^"]*"/lint=/'
    breaks "a group that is not asked for" '^nothing there, bare: status 0' \
      's/packages="$packages $bare"/:/'
    breaks "an unknown group" 'an unknown group: status 0' 's/exit 2/continue/'
    breaks "a foreign package taken for missing" '^called: apt-get' \
      's,| sed -n "s.*p"),| sed "s_.* __"),'
    breaks "an architecture that apt does not know" 'another architecture' \
      's/--add-architecture "/--print-architecture "/'
    breaks "installs nothing" "not called: '^apt-get install" \
      's/apt-get install -y/apt-get check/'
    breaks "a failure that is not told" 'not root: status 0' \
      's/^  exit 1$/  exit 0/'
  }
  end_self_test
fi
setup=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$*"
  exit 1
}

mkdir "$work/bin"
for command in sed grep cat mktemp rm env; do
  ln -s "$(command -v $command)" "$work/bin/$command"
done
# Answers as dpkg-query does, from the file named `status`.
cat > "$work/bin/dpkg-query" <<'END'
#!/bin/sh
for package; do :; done
while read -r name name_state; do
  case $name in
    "$package") state=$name_state ;;
    OTHERS) other_state=$name_state ;;
  esac
done < "$FAKE/status"
[ "${state:=${other_state:-}}" != unknown ] || exit 1
case $package in
  *:*) echo "${package#*:} $state" ;;
  # Where two architectures are, it tells of both.
  g++) printf 'amd64 %s\narm64 config-files\n' "$state" ;;
  *) echo "all $state" ;;
esac
END
cat > "$work/bin/dpkg" <<'END'
#!/bin/sh
case $1 in
  --print-architecture) echo amd64 ;;
  *) echo "dpkg $*" >> "$FAKE/calls" ;;
esac
END
cat > "$work/bin/apt-get" <<'END'
#!/bin/sh
echo "apt-get $*" >> "$FAKE/calls"
[ ! -e "$FAKE/apt_fails" ]
END
cat > "$work/bin/id" <<'END'
#!/bin/sh
cat "$FAKE/user"
END
chmod +x "$work/bin/dpkg-query" "$work/bin/dpkg" "$work/bin/apt-get" "$work/bin/id"

# setup_on USER STATUS_OF_OTHERS ARGUMENT...: output and calls are in files.
setup_on() {
  echo "$1" > "$work/user"
  echo "OTHERS $2" >> "$work/status"
  shift 2
  : > "$work/calls"
  status=0
  env -u CC -u CXX PATH="$work/bin" FAKE="$work" ${cxx:+"CXX=$cxx"} \
    ${cc:+"CC=$cc"} /bin/sh "$setup" "$@" > "$work/output" 2>&1 || status=$?
  rm "$work/status"
}
cxx='' cc=''

says() {
  grep -qe "$1" "$work/output" ||
    fail "not said: '$1', but: $(cat "$work/output")"
}
called() {
  grep -qe "$1" "$work/calls" ||
    fail "not called: '$1', but: $(cat "$work/calls")"
}
calls_nothing() {
  [ ! -s "$work/calls" ] || fail "called: $(cat "$work/calls")"
}

# All is there.
groups=$(sed -n 's/^#   \([a-z0-9]*\)  .*/\1/p' "$setup")
echo "$groups" | grep -qx coverage || fail "groups are: $groups"
for state in installed triggers-pending triggers-awaited; do
  for group in $groups; do
    setup_on 0 $state "$group"
    [ "$status" -eq 0 ] || fail "$state: status $status"
    calls_nothing
    [ ! -s "$work/output" ] || fail "$state: $(cat "$work/output")"
  done
done

# One is missing, or was removed, or is half there.
for state in unknown not-installed config-files half-installed unpacked; do
  echo "cmake $state" > "$work/status"
  setup_on 0 installed demo
  [ "$status" -eq 0 ] || fail "$state: status $status"
  called '^apt-get update'
  called '^apt-get install .* cmake$'
done

# A demo takes three packages at most.
setup_on 1000 unknown demo
[ "$status" -eq 1 ] || fail "not root: status $status"
calls_nothing
says '^  apt-get install --no-install-recommends g++ cmake'
count=$(sed -n 's/^  apt-get install --no-install-recommends //p' \
  "$work/output" | wc -w)
[ "$count" -le 3 ] || fail "$count packages for a demo"

# Nothing is there. Without this, a group of no packages would pass for one
# whose packages are all there.
for group in $groups; do
  setup_on 1000 unknown "$group"
  [ "$status" -eq 1 ] || fail "nothing there, $group: status $status"
  calls_nothing
  says 'apt-get install --no-install-recommends [a-z]'
done

# One of another architecture, which apt-get has to know before.
echo "libgtest-dev:arm64 unknown" > "$work/status"
setup_on 0 installed arm64
[ "$status" -eq 0 ] || fail "another architecture: status $status"
[ "$(sed 's/ -y.*--no-install-recommends//' "$work/calls" | tr '\n' ',')" = \
  'dpkg --add-architecture arm64,apt-get update -qq,apt-get install libgtest-dev:arm64,' ] ||
  fail "another architecture: $(cat "$work/calls")"
setup_on 1000 unknown arm64
says '^  dpkg --add-architecture arm64 && apt-get update && apt-get install'

# Installing fails.
touch "$work/apt_fails"
setup_on 0 unknown demo
rm "$work/apt_fails"
[ "$status" -eq 1 ] || fail "apt-get fails: status $status"
says '^  apt-get install '

# A compiler of the caller's own.
cxx='/bin/sh -x'
setup_on 1000 unknown demo
grep -q 'g++' "$work/output" && fail "g++ beside CXX"
says '^  apt-get install --no-install-recommends cmake'
cxx=no-such-compiler
setup_on 0 unknown demo
[ "$status" -eq 1 ] || fail "no such compiler: status $status"
says "CXX is 'no-such-compiler'"
calls_nothing
cxx=/bin/sh
setup_on 0 installed test
says 'CXX and CC are not used'
cxx='' cc=gcc
setup_on 0 installed demo
says 'CC is not used'
cc=''

# Groups.
setup_on 0 installed tset
[ "$status" -eq 2 ] || fail "an unknown group: status $status"
says "no group 'tset'"
