# The marks that the measures of cmake/Hardening.cmake leave in the program.
#
#   cmake -DREADELF=<readelf> -DPROGRAM=<qnpp> -P HardeningTest.cmake

cmake_minimum_required(VERSION 3.22)

execute_process(COMMAND "${READELF}" -hldW --dyn-syms "${PROGRAM}" OUTPUT_VARIABLE marks COMMAND_ERROR_IS_FATAL ANY)
# The same, whether this is the program of binutils or that of LLVM, which CMake prefers beside clang.
foreach(mark IN ITEMS "Type: +DYN" "GNU_RELRO" "\\(FLAGS_1\\)[^\n]*NOW PIE" "__stack_chk_fail" "GNU_STACK[^\n]*RW ")
  if(NOT marks MATCHES "${mark}")
    message(FATAL_ERROR "no mark of '${mark}' in\n${marks}")
  endif()
endforeach()
