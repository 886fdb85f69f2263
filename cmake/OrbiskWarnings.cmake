# Warnings are errors for our own targets; third-party headers come in as system includes.
function(orbisk_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Werror
    -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Woverloaded-virtual
    -Wimplicit-fallthrough -Wformat=2)
endfunction()
