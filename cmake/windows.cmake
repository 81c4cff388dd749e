# Toolchain: 64-bit Windows programs with mingw-w64 and its POSIX threads, run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# The packages from scripts/windows-packages.sh.
set(QUILLET_WINDOWS_PACKAGES ${CMAKE_CURRENT_LIST_DIR}/../build/windows-packages CACHE PATH
  "Where the packages for Windows stand")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUILLET_WINDOWS_PACKAGES)
get_filename_component(packages ${QUILLET_WINDOWS_PACKAGES} ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${packages} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine.sh)
