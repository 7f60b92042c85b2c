# Everything written by hand links `qnpp_warnings`; generated code does not.

option(QNPP_DEVELOPER "Treat warnings as errors; for work on qnpp itself" OFF)

add_library(qnpp_warnings INTERFACE)
target_compile_options(qnpp_warnings INTERFACE
  -Wall
  -Wextra
  -Wpedantic
  -Wconversion
  -Wsign-conversion
  -Wshadow
  -Wold-style-cast
  -Wcast-qual
  -Wnon-virtual-dtor
  -Woverloaded-virtual
  -Wextra-semi
  -Wimplicit-fallthrough
  -Wundef
  $<$<BOOL:${QNPP_IS_INSTRUMENTED_BY_GCC}>:-Wno-maybe-uninitialized>
  $<$<BOOL:${QNPP_DEVELOPER}>:-Werror>)
