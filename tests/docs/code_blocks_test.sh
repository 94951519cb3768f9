#!/bin/sh
# code_blocks_test.sh [--self-test] PYTHON TOP [HEADER...]
# Fails where a document of the project in TOP, or a comment of a HEADER, shows
# code that no test runs.
set -eu
if [ "$1" = --self-test ]; then
  python=$2 here=$(cd "$(dirname "$0")" && pwd)
  # shellcheck source=tests/support/self_test.sh
  . "$here/../support/self_test.sh"
  cd "$work"
  mkdir -p docs examples/oid tests/docs tests/reference
  # A small project, in which all is well.
  cat > examples/oid/CMakeLists.txt << 'END'
korvan_example(first)
korvan_example(second)
END
  cat > examples/oid/first.cc << 'END'
// What it is for.
int main() {
  Print("one");
  Print("two");
}
// It prints:
// one
// two
END
  cat > examples/oid/second.cc << 'END'
int main() { Print("three"); }
// It prints:
// three
END
  cat > docs/page.md << 'END'
# A page

```cpp
Print("one");
Print("two");
```

It prints:

    one
    two

1. An item

   that goes on

## The second

See [second.cc](../examples/oid/second.cc). It prints `three`.

```cpp
int main() { Print("three"); }
```

```
a drawing
```

    scripts/run one   # and why
END
  cat > scripts_run << 'END'
readme 'scripts/run one'
END
  cat > tests/docs/other_blocks.txt << 'END'
# What is no program's.
docs/page.md | a drawing | a drawing
docs/page.md | scripts/run | run in scripts_run
END
  echo 'foreach(header first second)' > tests/reference/CMakeLists.txt
  cat > tests/reference/first.cc << 'END'
int main() {
  Print(1);
  {
    Print(2);
  }
}
END
  cat > header.h << 'END'
/// What it does.
///
///     Print(1);
///
/// @param one  a thing
///             of several lines
///
/// @code
/// Print(2);
/// @endcode
int Print();
END
  check() {
    must_pass "all as it is" "$here/code_blocks_test.sh" "$python" "$work" \
      "$work/header.h"
  }
  # breaks WHAT MESSAGE FILE SED: another file.
  breaks() {
    cp "$3" kept
    sed -i "$4" "$3"
    must_fail "$1" "$2" "$here/code_blocks_test.sh" "$python" "$work" \
      "$work/header.h"
    mv kept "$3"
    check
  }
  check
  breaks "a line that is in no program" 'page.md:3: not in a program' \
    docs/page.md 's/^Print("two")/Print("more")/'
  breaks "lines in another order" 'page.md:3: not in a program' \
    docs/page.md '/^Print("two")/d; s/^Print("one");/Print("two");\n&/'
  breaks "a program of another section" 'page.md:21: not in a program' \
    docs/page.md 's/^int main.*/Print("one");/'
  breaks "another language" 'page.md:3: not in a program' \
    docs/page.md '3s/cpp$/c/'
  breaks "an output that lacks a line" 'page.md:10: not what' \
    docs/page.md '/^    two/d'
  breaks "another output" "no program prints 'four'" \
    docs/page.md 's/It prints .three/It prints `four/'
  breaks "a block that nobody lists" 'page.md:29: nobody runs it' \
    docs/page.md 's/^    scripts/    other/'
  breaks "a command that nobody runs" "'scripts/run two' is not in" \
    docs/page.md 's/run one/run two/'
  breaks "a block that is listed and gone" 'no such block: .*drawing' \
    docs/page.md 's/^a drawing/a picture/'
  breaks "a row that is none" 'not three columns' \
    tests/docs/other_blocks.txt 's/ | run in/ run in/'
  breaks "a program that no test runs" 'second.cc: no test runs it' \
    examples/oid/CMakeLists.txt 's/(second)/(third)/'
  breaks "a program that prints something else" 'page.md:10: not what' \
    examples/oid/first.cc 's/^\/\/ two/\/\/ more/'
  breaks "an example of a header that no test runs" 'first.cc: no test runs it' \
    tests/reference/CMakeLists.txt 's/first //'
  breaks "a comment that is in no program" 'header.h:3: not in a program' \
    header.h 's/Print(1)/Print("one")/'
  breaks "a comment's @code that is in no program" \
    'header.h:9: not in a program' header.h 's/Print(2)/Print("two")/'
  rm -r docs header.h
  : > tests/docs/other_blocks.txt
  must_fail "no code at all" '^0 code blocks' \
    "$here/code_blocks_test.sh" "$python" "$work"
  end_self_test
fi
python=$1 top=$2
shift 2
"$python" -B "$(dirname "$0")/code_blocks.py" "$top" \
  "$top/tests/docs/other_blocks.txt" "$@"
