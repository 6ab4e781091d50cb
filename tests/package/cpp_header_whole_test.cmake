# The C++ header uses every function that the C header declares.

file(READ "${HEADER}" header)
file(READ "${CPP_HEADER}" cpp_header)
string(REGEX MATCHALL "KORVEL_API KORVEL_RETURN_CODE[ \n]+KORVEL_[A-Za-z0-9_]+\\(" declarations "${header}")
string(REGEX REPLACE "//[^\n]*" "" cpp_header "${cpp_header}") # a mention is no use
set(count 0)
set(missing "")
foreach(declaration IN LISTS declarations)
  string(REGEX REPLACE ".*[ \n](KORVEL_[A-Za-z0-9_]+)\\($" "\\1" name "${declaration}")
  math(EXPR count "${count} + 1")
  if(NOT cpp_header MATCHES "${name}[^A-Za-z0-9_]")
    list(APPEND missing "${name}")
  endif()
endforeach()

if(count EQUAL 0 OR missing)
  message(FATAL_ERROR "Of ${count} functions, the C++ header lacks: ${missing}")
endif()
message(STATUS "${count} functions used")
