# What to do without the packages of tests, tools and documentation.
include_guard()

# korvan_leave_out(<what> <package>) tells that <what> is left out, because the
# Debian package that it needs is not there. Where every package is required,
# that is an error: a check that nobody misses is no check.
function(korvan_leave_out what package)
  if(KORVAN_REQUIRE_PACKAGES)
    message(FATAL_ERROR "${what} needs Debian's package ${package}, or its "
      "like. scripts/setup installs what is needed.")
  endif()
  message(STATUS "korvan: left out, because ${package} is missing: ${what}")
endfunction()
