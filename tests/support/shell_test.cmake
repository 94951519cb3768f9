# Tests that are shell scripts.
include_guard()

# korvan_shell_test(<name> <script> [<argument>...])
# adds the test <name>, which runs <script>, and <name>_can_fail, which runs it
# with --self-test before the same arguments: that breaks what the test looks
# at, and must see it fail. The self-tests find a compiler in CXX. Sanitizers
# have nothing to tell of them, and would make them slow.
function(korvan_shell_test name script)
  set(script "${CMAKE_CURRENT_SOURCE_DIR}/${script}")
  add_test(NAME ${name} COMMAND "${script}" ${ARGN} COMMAND_EXPAND_LISTS)
  if(NOT KORVAN_SANITIZE)
    add_test(NAME ${name}_can_fail COMMAND "${script}" --self-test ${ARGN}
      COMMAND_EXPAND_LISTS)
    set_tests_properties(${name}_can_fail PROPERTIES
      ENVIRONMENT "CXX=${CMAKE_CXX_COMPILER}")
  endif()
endfunction()
