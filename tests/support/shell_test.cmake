# Tests that are shell scripts.
include_guard()

# korvan_shell_test(<name> <script> [<argument>...])
# adds the test <name>, which runs <script>, and its self-test. A script that
# can't do its work here ends with status 77, and is counted as skipped.
function(korvan_shell_test name script)
  add_test(NAME ${name}
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/${script}" ${ARGN}
    COMMAND_EXPAND_LISTS)
  set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77)
  korvan_self_test(${name} ${script} ${ARGN})
endfunction()

# korvan_require_fixture(<fixture> <test>...)
# The tests need a fixture, and so do their self-tests, where there are any.
function(korvan_require_fixture fixture)
  foreach(test ${ARGN})
    foreach(name ${test} ${test}_can_fail)
      if(TEST ${name})
        set_property(TEST ${name} APPEND PROPERTY FIXTURES_REQUIRED ${fixture})
      endif()
    endforeach()
  endforeach()
endfunction()

# korvan_self_test(<name> <script> [<argument>...])
# adds the test <name>_can_fail, which runs <script> with --self-test before
# the same arguments: that breaks what the test looks at, and must see it fail.
# It finds a compiler in CXX. What it shows is about the script, so one build's
# run is enough, and the quickest build's. scripts/test-more runs what has the
# label `more`.
function(korvan_self_test name script)
  if(NOT KORVAN_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_test(NAME ${name}_can_fail
      COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/${script}" --self-test ${ARGN}
      COMMAND_EXPAND_LISTS)
    set_tests_properties(${name}_can_fail PROPERTIES LABELS more
      SKIP_RETURN_CODE 77 ENVIRONMENT "CXX=${CMAKE_CXX_COMPILER}")
  endif()
endfunction()
