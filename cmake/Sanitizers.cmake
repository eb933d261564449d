# ASan + UBSan for the test builds; libFuzzer's coverage on top for the fuzz
# build. Undefined behaviour stops the program in both, so a test or the fuzzer
# sees it as a failure rather than a line of output.
set(QUILO_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
if(QUILO_SANITIZE AND QUILO_FUZZ)
  message(FATAL_ERROR "QUILO_SANITIZE and QUILO_FUZZ each need a build directory of their own")
endif()
if(QUILO_SANITIZE)
  add_compile_options(${QUILO_SANITIZER_FLAGS})
  add_link_options(-fsanitize=address,undefined)
  # ASan's dlopen wrapper (in its shared runtime) becomes the caller, whose
  # RUNPATH is not the program's: the image library module would not be
  # found. A program's old-style RPATH is searched for every caller.
  add_link_options(-Wl,--disable-new-dtags)
endif()
if(QUILO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link ${QUILO_SANITIZER_FLAGS})
  add_link_options(-fsanitize=address,undefined)
endif()
