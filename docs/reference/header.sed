# Gives Doxygen a header without the unions that have no name: it makes dead links
# to what stands in them. The lines keep their numbers.
/^  union {$/,/^  };$/ {
  s/^  union {$//
  s/^  };$//
}
