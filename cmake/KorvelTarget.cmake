# What every target of this project is compiled with.

set(KORVEL_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize=: address,undefined or thread")

function(korvel_configure_target target)
  target_compile_features(${target} PUBLIC cxx_std_20 c_std_99)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF C_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                             C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  # Pixels must not depend on whether a compiler fuses a multiplication and an addition.
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off)
  if(KORVEL_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${KORVEL_SANITIZE} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=${KORVEL_SANITIZE})
  else()
    # A mistake that is still there shall end in a message rather than in somebody else's code.
    target_compile_options(${target} PRIVATE -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    target_compile_definitions(${target} PRIVATE $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=2>)
    target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
  endif()
  if(KORVEL_BUILD_FUZZERS)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()
