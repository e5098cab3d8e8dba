# The Windows-free part of the disc image reader, shared by the cross build and the native one.
set(TESSALY_CDIMAGE_CORE_SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/CBinaryFile.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CCueSheet.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CDiscImage.cpp)
