# Warnings for Orrery's own targets. Third-party headers come in as system
# includes, so these flags only judge our code.
function(orrery_set_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
    -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual)
  if(ORRERY_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
