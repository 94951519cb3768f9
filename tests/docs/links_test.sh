#!/bin/sh
# links_test.sh [--self-test] PYTHON TOP
# Fails where a relative link of a Markdown file in TOP leads nowhere.
set -eu
if [ "$1" = --self-test ]; then
  python=$2 here=$(cd "$(dirname "$0")" && pwd)
  # shellcheck source=tests/support/self_test.sh
  . "$here/../support/self_test.sh"
  cd "$work"
  mkdir docs
  : > file.h
  cat > README.md << 'END'
# The first page

[A page](docs/page.md), [a part of it](docs/page.md#the-2nd-part-it-says-no),
[one more](docs/page.md#again-1), [this page](#the-first-page),
[`<file.h>`](file.h), [of two
lines](docs), ![a picture](file.h), [elsewhere](https://example.org/none),
`[code](none)`.

    [code](none)

```
[code](none)
```
END
  printf '# The 2nd part, "it_says": no!\n\n## Again\n\n## Again\n' > docs/page.md
  sed -i 's/it_says/it says/' docs/page.md
  must_pass "all as it is" "$here/links_test.sh" "$python" "$work"
  # breaks WHAT MESSAGE SED: another page.
  breaks() {
    cp README.md kept
    sed -i "$3" README.md
    must_fail "$1" "$2" "$here/links_test.sh" "$python" "$work"
    mv kept README.md
  }
  breaks "a file that is not there" 'README.md: docs/gone.md leads nowhere' \
    's/(docs.page.md)/(docs\/gone.md)/'
  breaks "a heading that is not there" '#again-2 leads to no heading' \
    's/#again-1/#again-2/'
  breaks "a heading of this page that is not there" '#none leads to no heading' \
    's/#the-first-page/#none/'
  breaks "a link over two lines" 'none leads nowhere' 's/(docs)/(none)/'
  breaks "a picture that is not there" 'none leads nowhere' 's/!\[\(.*\)](file.h)/![\1](none)/'
  breaks "a link out of the project" 'leads out of the project' 's/(docs)/(..)/'
  breaks "a link from the root" 'is no relative link' 's/(docs)/(\/tmp)/'
  breaks "a heading with a link in it" 'none leads nowhere' \
    's/^# The first page/&\n\n## [Part](none)/'
  printf '# A page\n' > README.md
  must_fail "no links at all" '^0 links' "$here/links_test.sh" "$python" "$work"
  end_self_test
fi
"$1" -B "$(dirname "$0")/links.py" "$2"
