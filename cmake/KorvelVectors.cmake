# Sources that are compiled once for each vector instruction set, beside everything else, which any x86-64 processor
# runs. Callers choose at run time (core/instruction_set.h).
#
# What such a source defines lies in the namespace KORVEL_VECTORS, so that the linker never takes a function with one
# instruction set for its namesake with another. For the same reason it uses no inline function or template from
# elsewhere but Highway's, whose namespaces differ likewise.

foreach(set IN ITEMS avx avx2)
  set(target korvel_vectors_${set})
  add_library(${target} OBJECT)
  korvel_configure_target(${target})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  # Highway would ask for instructions that the records of processor features don't know.
  target_compile_definitions(${target} PRIVATE KORVEL_VECTORS=${set} HWY_DISABLE_BMI2_FMA HWY_DISABLE_F16C
                                               HWY_DISABLE_PCLMUL_AES)
  target_compile_options(${target} PRIVATE -m${set} -O3)
endforeach()
# Whatever the compiler's flags would allow besides.
target_compile_definitions(korvel_vectors_avx PRIVATE KORVEL_VECTOR_BYTES=16 HWY_BASELINE_TARGETS=HWY_SSE4)
target_compile_definitions(korvel_vectors_avx2 PRIVATE KORVEL_VECTOR_BYTES=32 HWY_BASELINE_TARGETS=HWY_AVX2)

function(korvel_add_vector_sources)
  foreach(set IN ITEMS avx avx2)
    foreach(source IN LISTS ARGN)
      target_sources(korvel_vectors_${set} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/${source}")
    endforeach()
  endforeach()
endfunction()
