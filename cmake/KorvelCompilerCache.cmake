# Compiles through ccache where it is installed and nobody asked for another launcher.

find_program(KORVEL_CCACHE ccache)
mark_as_advanced(KORVEL_CCACHE)
if(PROJECT_IS_TOP_LEVEL AND KORVEL_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${KORVEL_CCACHE}")
endif()
