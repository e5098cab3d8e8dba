# The Windows-free part of the ASF header parser, shared by the cross build and the native one.
set(TESSALY_INSPECT_CORE_SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/CByteView.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CStreamInfo.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CASFFileParser.cpp)
