# Writes OUTPUT: each function that HEADER declares, under its own name, as a call of the library's with a look at the
# code that comes back, which the header has to list for the function. A program that has them calls them in place of the
# library's.

file(READ "${HEADER}" header)
string(REPLACE ";" "" header "${header}")
string(REGEX MATCHALL "@retval +[A-Za-z]+|KORVEL_API KORVEL_RETURN_CODE[ \n]+KORVEL_[A-Za-z0-9_]+\\([^)]*\\)" tokens
       "${header}")
set(codes "")
set(functions "")
foreach(token IN LISTS tokens)
  if(token MATCHES "@retval +(.*)")
    list(APPEND codes "KORVEL_RETURN_CODE_${CMAKE_MATCH_1}")
    continue()
  endif()
  string(REGEX REPLACE "[ \n]+" " " signature "${token}")
  string(REGEX MATCH " (KORVEL_[A-Za-z0-9_]+)\\((.*)\\)" call "${signature}")
  set(name "${CMAKE_MATCH_1}")
  string(REGEX REPLACE "[^,]*[ *]([A-Za-z0-9_]+)" "\\1" arguments "${CMAKE_MATCH_2}")
  string(REPLACE "," ", " arguments "${arguments}")
  list(JOIN codes ", " codes)
  string(APPEND functions "\n${signature} {\n"
                          "  return korvel_test::Watch<&${name}>(\"${name}\", {${codes}}, ${arguments});\n}\n")
  set(codes "")
endforeach()
file(WRITE "${OUTPUT}" "#include \"tests/support/watched_functions.h\"\n${functions}")
