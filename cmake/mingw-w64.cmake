# Cross-compiles for 64-bit Windows with mingw-w64 (the variant with POSIX threads) and runs what was built under Wine.
# scripts/bootstrap makes what is taken from build/ here.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

cmake_path(SET utility_build_folder NORMALIZE "${CMAKE_CURRENT_LIST_DIR}/../build")
list(APPEND CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 "${utility_build_folder}/deps/mingw")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/wine.sh")
