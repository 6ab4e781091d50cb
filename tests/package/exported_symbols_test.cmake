# The library exports the functions that the header declares, and nothing else.

file(READ "${HEADER}" header)
string(REGEX MATCHALL "KORVEL_API KORVEL_RETURN_CODE[ \n]+KORVEL_[A-Za-z0-9_]+\\(" declarations "${header}")
set(declared "")
foreach(declaration IN LISTS declarations)
  string(REGEX REPLACE ".*[ \n](KORVEL_[A-Za-z0-9_]+)\\($" "\\1" name "${declaration}")
  list(APPEND declared "${name}")
endforeach()
list(SORT declared)

execute_process(COMMAND "${NM}" --dynamic --defined-only --format=posix "${LIBRARY}" OUTPUT_VARIABLE symbols
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
set(exported "")
foreach(line IN LISTS lines)
  string(REGEX REPLACE " .*" "" name "${line}")
  list(APPEND exported "${name}")
endforeach()
list(SORT exported)

list(LENGTH declared count)
if(count EQUAL 0 OR NOT declared STREQUAL exported)
  message(FATAL_ERROR "The header declares:\n${declared}\nThe library exports:\n${exported}")
endif()
message(STATUS "${count} functions declared and exported")
