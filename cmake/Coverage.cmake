# QNPP_COVERAGE: clang's instrumentation of the program and of everything that is linked with it, for scripts/coverage.
#
# The counters of a program are a file that is mapped into it (%c), so what a process has counted is kept if it ends by a
# signal or without its exit handlers; clang wants counters that can be moved for that. All processes of one program share
# one file (%m), found wherever they run and with whatever environment, because its name is compiled in.

if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "QNPP_COVERAGE wants clang++ as the compiler, not ${CMAKE_CXX_COMPILER_ID}")
endif()

set(countersFile "${CMAKE_CURRENT_BINARY_DIR}/counters/%m%c.profraw")
set(countingOptions
  "-fprofile-instr-generate=${countersFile}"
  -fcoverage-mapping
  # Counters that many processes share are not changed by halves.
  -fprofile-update=atomic
  "SHELL:-mllvm -runtime-counter-relocation")

target_compile_options(qnpp_lexer_generated PRIVATE ${countingOptions})
# The driver sees nothing of the engine.
foreach(part qnpp_engine qnpp_process)
  target_compile_options(${part} PUBLIC ${countingOptions})
  target_link_options(${part} PUBLIC -fprofile-instr-generate)
endforeach()
