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
# Test programs are hosts of the engine, not the engine: they are compiled unoptimised in every
# build type (the engine's libraries keep the build type's optimisation), which saves about a
# third of the build's time on assertion-heavy sources.
set(TESSALY_TEST_COMPILE_OPTIONS -O0)
foreach(_gtest_target gtest gtest_main gmock gmock_main)
  target_compile_options(${_gtest_target} PRIVATE ${TESSALY_TEST_COMPILE_OPTIONS})
endforeach()

# tessaly_test(name SOURCES... LIBS ... [PROPERTIES ...] [GL_RENDERER_CASES filter]): one GoogleTest
# program, its cases discovered when ctest runs, each with the given ctest properties and five
# minutes to run (the open/close cycle cases take half a minute alone and over two on a busy
# machine; a hang still ends the run in good time). The prefixes
# draw Direct3D through GDI, the only way video reaches a child window under Xvfb; Wine's VMR-9
# cannot render that way at all, so the cases that need it (a --gtest_filter pattern) run with
# Wine's OpenGL renderer instead.
function(tessaly_test name)
  cmake_parse_arguments(T "" "GL_RENDERER_CASES" "SOURCES;LIBS;PROPERTIES" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gmock GTest::gtest_main)
  target_link_options(${name} PRIVATE -static)
  target_compile_options(${name} PRIVATE ${TESSALY_TEST_COMPILE_OPTIONS})
  tessaly_warnings(${name})
  set(discover ${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 TEST_PREFIX "${name}.")
  if(T_GL_RENDERER_CASES)
    gtest_discover_tests(${discover} TEST_FILTER "-${T_GL_RENDERER_CASES}" PROPERTIES TIMEOUT 300 ${T_PROPERTIES})
    gtest_discover_tests(${discover} TEST_FILTER "${T_GL_RENDERER_CASES}"
      PROPERTIES TIMEOUT 300 ENVIRONMENT "WINE_D3D_CONFIG=renderer=gl" ${T_PROPERTIES})
  else()
    gtest_discover_tests(${discover} PROPERTIES TIMEOUT 300 ${T_PROPERTIES})
  endif()
endfunction()
