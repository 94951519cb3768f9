#!/bin/sh
# lint_test.sh LINT
# Shows that scripts/lint passes a clean project and sees each fault, in a
# project of two files and a map of the tests.
set -eu
top=$(cd "$(dirname "$1")/.." && pwd)
# shellcheck source=tests/support/self_test.sh
. "$top/tests/support/self_test.sh"
cd "$work"
git init -q .
mkdir scripts oid tests tests/oid
cp "$top/scripts/lint" scripts/lint
printf '#!/bin/sh\nexit 0\n' > scripts/setup
chmod +x scripts/setup
cp "$top/.clang-format" .
echo "\`oid_test.cc\` shows what a search finds." > tests/README.md
echo '// What a search finds.' > tests/oid/oid_test.cc

holds() {  # holds TEXT: the file of the project
  # shellcheck disable=SC2059  # the text is the format
  printf "$1" > oid/file.cc
  git add -A
}

holds '// What it is for.\n\nint Answer() { return 42; }\n'
must_pass "a clean project" scripts/lint

sees() {  # sees PATTERN TEXT
  holds "$2"
  must_fail "$1" "$1" scripts/lint
}
sees 'not as clang-format' '// For.\nint  Answer() { return 42; }\n'
sees 'misspelt' '// Recieve.\nint Answer() { return 42; }\n'
sees '/// outside' '// For.\n\n/// The answer.\nint Answer() { return 42; }\n'
sees 'without braces' \
  '// For.\n\nint Answer(int i) {\n  if (i == 0) return 1;\n  return 42;\n}\n'
sees 'does not use' '// Pointers are lent.\nint Answer() { return 42; }\n'
sees 'not rooted' '// For.\n#include "answer.h"\n'
sees 'do not open' 'int Answer() { return 42; }\n'
holds '// What it is for.\n'
echo '// What a key is.' > tests/oid/key_test.cc
git add -A
must_fail "a test file without a row" 'does not name' scripts/lint
mv tests/oid/key_test.cc tests/oid/oid_test.cc
echo "\`oid_test.cc\`, and \`gone_test.cc\`" > tests/README.md
git add -A
must_fail "a row without a file" 'that are not there' scripts/lint
echo "\`oid_test.cc\`" > tests/README.md
# shellcheck disable=SC2016  # for the written script
printf '#!/bin/sh\necho $1\n' > scripts/unquoted
git add -A
must_fail "a shell script's fault" 'shellcheck' scripts/lint
rm scripts/unquoted

# A tool that does nothing finds nothing.
holds '// What it is for.\n'
cp .clang-format kept
echo 'NoSuchKey: 1' >> .clang-format
must_fail "a layout that clang-format can't read" 'NoSuchKey' scripts/lint
mv kept .clang-format
for tool in clang-format shellcheck codespell; do
  mkdir "$work/tools"
  printf '#!/bin/sh\nexit 64\n' > "$work/tools/$tool"
  chmod +x "$work/tools/$tool"
  must_fail "$tool ends with an error" "$tool ended with status 64" \
    env "PATH=$work/tools:$PATH" scripts/lint
  rm -r "$work/tools"
done
must_pass "the project again" scripts/lint
end_self_test
