# What both cross toolchains share; the toolchain file of a target sets TESSALY_TRIPLET and the
# target's own values first. mingw-w64's posix thread model gives std::mutex (and GoogleTest).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${TESSALY_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TESSALY_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${TESSALY_TRIPLET}-windres)
set(TESSALY_WIDL ${TESSALY_TRIPLET}-widl)
set(TESSALY_OBJDUMP ${TESSALY_TRIPLET}-objdump)

set(CMAKE_FIND_ROOT_PATH /usr/${TESSALY_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
