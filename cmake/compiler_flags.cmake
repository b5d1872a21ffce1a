# vidproc_flags: what every target of this project is compiled with.
add_library(vidproc_flags INTERFACE)
# -ffp-contract=off: filter banks must come out the same on every processor and with every compiler.
target_compile_options(vidproc_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -ffp-contract=off)
if(VIDPROC_WERROR)
  target_compile_options(vidproc_flags INTERFACE -Werror)
endif()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64|i[3-6]86)$" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  # The older floating-point unit rounds to more bits than a double has.
  target_compile_options(vidproc_flags INTERFACE -msse2 -mfpmath=sse)
endif()
if(VIDPROC_SANITIZE)
  target_compile_options(vidproc_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                 -fno-omit-frame-pointer)
  target_link_options(vidproc_flags INTERFACE -fsanitize=address,undefined)
endif()
if(VIDPROC_BUILD_FUZZERS)
  target_compile_options(vidproc_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
