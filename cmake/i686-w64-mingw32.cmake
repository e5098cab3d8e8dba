# 32-bit Windows: the product as its contract describes it.
set(TESSALY_TRIPLET i686-w64-mingw32)
set(TESSALY_TARGET i686)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(TESSALY_WIDL_TARGET --win32)
# Wine of the target's width: the 32-bit loader in a 32-bit prefix.
set(TESSALY_WINEARCH win32)
set(TESSALY_WINELOADER /usr/lib/wine/wine)
include(${CMAKE_CURRENT_LIST_DIR}/MingwToolchain.cmake)
