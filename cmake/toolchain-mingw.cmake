# 64-bit Windows by mingw-w64, with the static libraries that scripts/windows-libs has put into the cache.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Kept in the cache, so that a later run of the build needs no environment.
set(BURSARIA_WINDOWS_LIBS "$ENV{BURSARIA_WINDOWS_LIBS}" CACHE PATH "folder that scripts/windows-libs prints")
if(NOT EXISTS "${BURSARIA_WINDOWS_LIBS}/lib/libcurl.a")
    message(FATAL_ERROR "BURSARIA_WINDOWS_LIBS must name the folder that scripts/windows-libs prints on its last line")
endif()
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES BURSARIA_WINDOWS_LIBS)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${BURSARIA_WINDOWS_LIBS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
list(APPEND CMAKE_PREFIX_PATH ${BURSARIA_WINDOWS_LIBS})
