# Warnings for Orrery's own targets. Third-party headers come in as system
# includes, so these flags only judge our code.
function(orrery_set_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
    -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 at -O3 reports a false -Wrestrict inside <string> for ordinary
    # concatenations (GCC bug 105329); it says nothing about our code.
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(ORRERY_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
