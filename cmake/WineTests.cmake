# Test programs are Windows programs: ctest runs them through Wine, in the project's own prefix
# inside the build tree, with the audio routed to an ALSA null device.
set(TESSALY_WINEPREFIX ${CMAKE_BINARY_DIR}/wineprefix)
configure_file(${CMAKE_SOURCE_DIR}/cmake/asound.conf ${CMAKE_BINARY_DIR}/asound.conf COPYONLY)
configure_file(${CMAKE_SOURCE_DIR}/cmake/wine-run.in ${CMAKE_BINARY_DIR}/wine-run @ONLY
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_BINARY_DIR}/wine-run)

set(gtest_disable_pthreads ON CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
include(GoogleTest)

# tessaly_test(name SOURCES... LIBS ... [PROPERTIES ...]): one GoogleTest program, its cases
# discovered when ctest runs, each with the given ctest properties.
function(tessaly_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBS;PROPERTIES" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gmock GTest::gtest_main)
  target_link_options(${name} PRIVATE -static)
  tessaly_warnings(${name})
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 TEST_PREFIX "${name}."
    PROPERTIES TIMEOUT 120 ${T_PROPERTIES})
endfunction()
