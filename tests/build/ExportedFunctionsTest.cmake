# The program's dynamic symbol table holds the three version functions under their C names and no other function: whatever
# is loaded into the process may call these, and nothing else is promised.
#
#   cmake -DNM=<nm> -DPROGRAM=<qnpp> -P ExportedFunctionsTest.cmake

cmake_minimum_required(VERSION 3.22)

execute_process(COMMAND "${NM}" -D --defined-only "${PROGRAM}" OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[Qq]n[A-Z][A-Za-z]+" exported "${symbols}")
list(SORT exported)
set(expected QnGetCopyrightString QnGetLibNameAndVersionString QnGetVersionString)
if(NOT exported STREQUAL expected)
  message(FATAL_ERROR "expected the functions ${expected}\nin the dynamic symbol table, which is\n${symbols}")
endif()
if(symbols MATCHES "[Cc]ppPreprocessor")
  message(FATAL_ERROR "the engine shows in the dynamic symbol table:\n${symbols}")
endif()
