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
