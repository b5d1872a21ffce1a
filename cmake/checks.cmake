# Checks of the sources and of the built objects, run by ctest beside the tests. Sanitizers and emulation bring symbols
# of their own.
add_test(NAME include_directions COMMAND ${PROJECT_SOURCE_DIR}/scripts/check_includes)
add_test(NAME public_headers COMMAND ${PROJECT_SOURCE_DIR}/scripts/check_headers)
if(NOT VIDPROC_SANITIZE AND NOT VIDPROC_EMULATE_WIDE)
  add_test(NAME symbols COMMAND ${PROJECT_SOURCE_DIR}/scripts/check_symbols ${PROJECT_BINARY_DIR})
endif()
