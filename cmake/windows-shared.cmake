# As windows.cmake, for the window program: Qt and the compiler's runtime libraries stand beside the program as shared
# libraries. Qt itself is built with this file, too.
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)
# From windows-qt.sh.
list(PREPEND CMAKE_FIND_ROOT_PATH ${CMAKE_CURRENT_LIST_DIR}/../.libraries/windows-qt)
set(CMAKE_EXE_LINKER_FLAGS_INIT "")
