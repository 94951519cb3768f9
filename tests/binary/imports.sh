#!/bin/sh
# imports.sh LIBRARY ALLOWED_LIBRARY...
# Fails when LIBRARY needs a shared object other than the allowed ones, or
# lacks the stack protector or the fortified calls of the C library.
set -eu
export LC_ALL=C
library=$1
shift
failed=0
for needed in $(readelf -Wd "$library" | sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p')
do
  case " $* " in
    *" $needed "*) ;;
    *) echo "needs $needed"; failed=1 ;;
  esac
done
imported=$(readelf -W --dyn-syms "$library")
printf '%s\n' "$imported" | grep -q 'UND.*__stack_chk_fail' ||
  { echo "has no stack protector"; failed=1; }
printf '%s\n' "$imported" | grep -q 'UND.*_chk@' ||
  { echo "calls nothing fortified"; failed=1; }
exit $failed
