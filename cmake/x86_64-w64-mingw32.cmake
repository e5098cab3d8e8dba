# 64-bit Windows: the same engine for 64-bit hosts.
set(TESSALY_TRIPLET x86_64-w64-mingw32)
set(TESSALY_TARGET x86_64)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(TESSALY_WIDL_TARGET --win64)
# Wine of the target's width: the 64-bit loader, which the plain `wine` command may not be.
set(TESSALY_WINEARCH win64)
set(TESSALY_WINELOADER /usr/lib/wine/wine64)
include(${CMAKE_CURRENT_LIST_DIR}/MingwToolchain.cmake)
