# Fails unless LIBRARY imports the platform's symbols and names no library that
# has them.
execute_process(COMMAND nm -D --undefined-only "${LIBRARY}"
  OUTPUT_VARIABLE imported COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND readelf -d "${LIBRARY}"
  OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
foreach(symbol SetLastError _ZN15CASNTBaseRecordC1Ev _ZN8IdentObjaSERKS_)
  if(NOT imported MATCHES "U ${symbol}")
    message(FATAL_ERROR "${LIBRARY} does not import ${symbol}")
  endif()
endforeach()
if(dynamic MATCHES "korvan_platform")
  message(FATAL_ERROR "${LIBRARY} needs the bundled platform")
endif()
