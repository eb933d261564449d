# The hardening Debian builds its packages with: fortified libc calls where
# the optimiser can check them, and a read-only offset table once loaded.
# The sanitizer and fuzzing builds bring checks of their own.
if(NOT QUILO_SANITIZE AND NOT QUILO_FUZZ AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_compile_definitions(_FORTIFY_SOURCE=2)
endif()
add_link_options(LINKER:-z,relro LINKER:-z,now)
