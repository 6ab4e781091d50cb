# The library is a file named after the whole version, with a SONAME that holds the major version.

string(REGEX MATCH "^[0-9]+" major "${VERSION}")
get_filename_component(name "${LIBRARY}" NAME)
if(NOT name STREQUAL "libkorvel.so.${VERSION}")
  message(FATAL_ERROR "The library's file is ${name}")
endif()
execute_process(COMMAND "${READELF}" --dynamic "${LIBRARY}" OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
string(FIND "${dynamic}" "[libkorvel.so.${major}]" found)
if(found EQUAL -1)
  message(FATAL_ERROR "No SONAME libkorvel.so.${major} in:\n${dynamic}")
endif()
