# Makes the page for man(1) of a program from docs/PROGRAM.1.md. With SOURCE_DATE_EPOCH in the environment, the page
# carries that day.
#
#   cmake -DAWK=<awk> -DSOURCE_DIR=<checkout> -DPROGRAM=<name> -DOUTPUT=<page> -P WriteManPage.cmake

cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/Version.cmake")

string(TOUPPER "${PROGRAM}" name)
string(TIMESTAMP date "%Y-%m-%d" UTC)
execute_process(
  COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C
          "${AWK}" -v "name=${name}" -v section=1 -v "date=${date}" -v "version=qnpp ${QNPP_VERSION}"
          -v "copyright=${QNPP_COPYRIGHT}" -f "${SOURCE_DIR}/cmake/MarkdownToMan.awk" "${SOURCE_DIR}/docs/${PROGRAM}.1.md"
  OUTPUT_FILE "${OUTPUT}.part"
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  file(REMOVE "${OUTPUT}.part")
  message(FATAL_ERROR "the man page could not be made (${status})")
endif()
file(RENAME "${OUTPUT}.part" "${OUTPUT}")
