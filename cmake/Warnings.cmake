# High warnings, treated as errors, for the project's own code only (not generated or third-party code).
function(tessaly_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wshadow -Woverloaded-virtual -Wcast-qual
    -Wformat=2 -Wmissing-declarations -Wundef -Werror)
endfunction()
