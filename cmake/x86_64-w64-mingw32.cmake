# Cross-compiles the same engine for 64-bit Windows hosts, with mingw-w64's posix thread model.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(TESSALY_TARGET x86_64)
set(TESSALY_WIDL x86_64-w64-mingw32-widl)
set(TESSALY_WIDL_TARGET --win64)
set(TESSALY_OBJDUMP x86_64-w64-mingw32-objdump)
# Wine of the target's width: the 64-bit loader, which the plain `wine` command may not be.
set(TESSALY_WINEARCH win64)
set(TESSALY_WINELOADER /usr/lib/wine/wine64)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
