# Warnings for our own targets; third-party headers come in as system includes. They are errors
# only where ORBISK_WERROR is on (developers' and CI builds, through scripts/test): a packager's or
# user's compiler may warn about things ours does not, and that must not stop their build.
option(ORBISK_WERROR "Treat compiler warnings as errors" OFF)

function(orbisk_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic
    -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Woverloaded-virtual
    -Wimplicit-fallthrough -Wformat=2)
  # g++ 12 at -O2/-O3 reports -Wrestrict for "text" + std::string, which is correct code (GCC bug
  # 105329, fixed in 13); the warning stays on for other compilers.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(ORBISK_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
