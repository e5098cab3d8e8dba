# High warnings, treated as errors, for the project's own code only (not generated or third-party code).
function(tessaly_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wshadow -Woverloaded-virtual -Wcast-qual
    -Wformat=2 -Wmissing-declarations -Wundef -Werror)
endfunction()

# Release builds must carry no trace text: the sink compiles every line away there.
function(tessaly_release_has_no_traces target)
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND sh ${CMAKE_SOURCE_DIR}/cmake/check-no-traces.sh $<TARGET_FILE:${target}> ${CMAKE_SOURCE_DIR}
      VERBATIM)
  endif()
endfunction()

# tessaly_com_server(name SOURCES...): an in-process server DLL of this project, named name.dll,
# linked statically (no compiler runtime libraries to ship beside it), with our warnings, the
# release trace check, and a build that fails unless it exports exactly the four server entry
# points (its .def file among the sources).
function(tessaly_com_server name)
  add_library(${name} SHARED ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "" OUTPUT_NAME ${name})
  target_link_options(${name} PRIVATE -static -Wl,--enable-stdcall-fixup)
  tessaly_warnings(${name})
  tessaly_release_has_no_traces(${name})
  add_custom_command(TARGET ${name} POST_BUILD
    COMMAND sh ${CMAKE_SOURCE_DIR}/cmake/check-exports.sh $<TARGET_FILE:${name}> ${TESSALY_OBJDUMP}
    VERBATIM)
endfunction()
