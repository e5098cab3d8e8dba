# Cross-compiles for 32-bit Windows, the product as its contract describes it, with mingw-w64's
# posix thread model (std::mutex, GoogleTest).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
set(TESSALY_TARGET i686)
set(TESSALY_WIDL i686-w64-mingw32-widl)
set(TESSALY_WIDL_TARGET --win32)
set(TESSALY_OBJDUMP i686-w64-mingw32-objdump)
# Wine of the target's width: the 32-bit loader in a 32-bit prefix.
set(TESSALY_WINEARCH win32)
set(TESSALY_WINELOADER /usr/lib/wine/wine)

set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
