# Every target of ours gets the same strict warnings; third-party headers are
# included as system headers so they stay quiet.
function(quilo_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion)
endfunction()
