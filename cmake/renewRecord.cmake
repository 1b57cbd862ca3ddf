# Fills the build record of LIBRARY again, by KYRECORD, with the values that it has: for a file whose
# size has changed since.
execute_process(COMMAND "${KYRECORD}" show --json "${LIBRARY}"
  OUTPUT_VARIABLE record COMMAND_ERROR_IS_FATAL ANY)
set(values)
string(JSON count LENGTH "${record}")
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
  string(JSON key MEMBER "${record}" ${i})
  string(JSON value GET "${record}" "${key}")
  string(REPLACE ";" "\\;" value "${value}")
  if(NOT key STREQUAL "size")
    list(APPEND values "${key}=${value}")
  endif()
endforeach()
execute_process(COMMAND "${KYRECORD}" fill "${LIBRARY}" --set ${values} COMMAND_ERROR_IS_FATAL ANY)
