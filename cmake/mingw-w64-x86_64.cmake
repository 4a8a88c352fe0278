# Cross build for 64-bit Windows with Debian's mingw-w64 compilers. The POSIX thread
# model (the -posix compilers) is the one that std::thread and libgomp need.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_Fortran_COMPILER x86_64-w64-mingw32-gfortran-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# libgomp linked in: FindOpenMP would otherwise take the import library of libgomp-1.dll.
execute_process(COMMAND ${CMAKE_C_COMPILER} -print-file-name=libgomp.a
  OUTPUT_VARIABLE QUELLON_STATIC_GOMP OUTPUT_STRIP_TRAILING_WHITESPACE)
set(OpenMP_gomp_LIBRARY ${QUELLON_STATIC_GOMP} CACHE FILEPATH "libgomp, static")
