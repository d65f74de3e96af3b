# Warnings are errors in our own code; third-party headers come in as system headers and stay silent.
add_library(vantrel_warnings INTERFACE)
target_compile_options(vantrel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align -Wunused -Woverloaded-virtual -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 sees overlapping copies in plain concatenations of std::string that it has inlined.
  target_compile_options(vantrel_warnings INTERFACE -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(vantrel_warnings INTERFACE -Wthread-safety -Werror=thread-safety)
endif()
if(VANTREL_UNITS)
  # Where several sources make one unit, a name may hide a name of its neighbour, and what is local to a source is no
  # longer local to the unit.
  target_compile_options(vantrel_warnings INTERFACE -Wno-shadow)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(vantrel_warnings INTERFACE -Wno-subobject-linkage)
  endif()
endif()
