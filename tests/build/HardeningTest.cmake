# The marks that the measures of cmake/Hardening.cmake leave in the program.
#
#   cmake -DREADELF=<readelf> -DPROGRAM=<qnpp> -P HardeningTest.cmake

cmake_minimum_required(VERSION 3.22)

execute_process(COMMAND "${READELF}" -hldW --dyn-syms "${PROGRAM}" OUTPUT_VARIABLE marks COMMAND_ERROR_IS_FATAL ANY)
foreach(mark IN ITEMS "Type: +DYN" "GNU_RELRO" "Flags: NOW PIE" "__stack_chk_fail" "GNU_STACK[^\n]*RW ")
  if(NOT marks MATCHES "${mark}")
    message(FATAL_ERROR "no mark of '${mark}' in\n${marks}")
  endif()
endforeach()
