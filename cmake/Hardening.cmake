# QNPP_HARDENED: the program defends itself against faults of its own. Checked copies and a guarded stack cost up to 2 %
# of the instructions (docs/robustness.md has the figures); an address space laid out at random and tables that are read
# only once the program runs cost nothing that can be measured.

option(QNPP_HARDENED "Build with _FORTIFY_SOURCE, stack protection, PIE and full RELRO" ON)

if(NOT QNPP_HARDENED OR QNPP_SANITIZE OR QNPP_COVERAGE)
  return()  # The sanitizers check the same and more.
endif()
if(WIN32)
  return()  # Addresses are laid out at random by default. The rest would want a library wherever qnpp's is linked.
endif()

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_compile_options(
  -fstack-protector-strong
  # It wants an optimised build. What a distribution defines beforehand gives way.
  "$<$<NOT:$<CONFIG:Debug>>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>")
add_link_options("LINKER:-z,relro" "LINKER:-z,now")
