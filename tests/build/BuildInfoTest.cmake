# The header that says when and from what the program was built.
#
#   cmake -DSOURCE_DIR=<checkout> -DWORK_DIR=<scratch folder> -P BuildInfoTest.cmake

cmake_minimum_required(VERSION 3.22)

set(header "${WORK_DIR}/BuildInfo.h")

# Writes the header for a source folder at a moment, in a time zone, and leaves its text in `text`.
function(write_header sourceDir epoch timeZone)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env SOURCE_DATE_EPOCH=${epoch} TZ=${timeZone}
            "${CMAKE_COMMAND}" "-DSOURCE_DIR=${sourceDir}" "-DOUTPUT=${header}"
            -P "${SOURCE_DIR}/cmake/WriteBuildInfo.cmake"
    COMMAND_ERROR_IS_FATAL ANY)
  file(READ "${header}" content)
  set(text "${content}" PARENT_SCOPE)
endfunction()

function(expect_line line)
  string(FIND "${text}" "${line}\n" place)
  if(place EQUAL -1)
    message(FATAL_ERROR "expected the line\n${line}\nin\n${text}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}/no-checkout")

# One second before and at midnight UTC of 2024-03-05; the day below ten is padded with a blank, and the time zone of the
# building machine makes no difference.
write_header("${WORK_DIR}/no-checkout" 1709596799 UTC)
expect_line("inline constexpr const char* kDate = \"Mar  4 2024\";")
write_header("${WORK_DIR}/no-checkout" 1709596800 Pacific/Honolulu)
expect_line("inline constexpr const char* kDate = \"Mar  5 2024\";")
# A month with a leading zero that is no octal digit, and a day of two digits: 2023-09-30.
write_header("${WORK_DIR}/no-checkout" 1696032000 Asia/Tokyo)
expect_line("inline constexpr const char* kDate = \"Sep 30 2023\";")

# A folder that is no checkout, inside another checkout or not, has no revision.
expect_line("inline constexpr const char* kIdentifierSuffix = \", unknown\";")

# A checkout has that of its last commit, without any configuring in between.
find_program(GIT git)
if(GIT)
  set(checkout "${WORK_DIR}/checkout")
  file(MAKE_DIRECTORY "${checkout}")
  foreach(round 1 2)
    execute_process(COMMAND "${GIT}" init -q "${checkout}" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(
      COMMAND "${GIT}" -c user.name=t -c user.email=t@example.com -c commit.gpgsign=false commit -q --allow-empty
              --no-verify -m "commit ${round}"
      WORKING_DIRECTORY "${checkout}" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND "${GIT}" rev-parse HEAD WORKING_DIRECTORY "${checkout}" OUTPUT_VARIABLE revision)
    string(SUBSTRING "${revision}" 0 10 revision)
    write_header("${checkout}" 1709596800 UTC)
    expect_line("inline constexpr const char* kIdentifierSuffix = \", ${revision}\";")
  endforeach()
endif()

# A second run that finds nothing new leaves the file as it is, so that nothing is compiled again.
set(before "")
file(TIMESTAMP "${header}" before "%s")
execute_process(COMMAND "${CMAKE_COMMAND}" -E sleep 1.1)
if(GIT)
  write_header("${checkout}" 1709596800 UTC)
else()
  write_header("${WORK_DIR}/no-checkout" 1696032000 UTC)
endif()
file(TIMESTAMP "${header}" after "%s")
if(NOT before STREQUAL after)
  message(FATAL_ERROR "the header was written again although nothing in it has changed")
endif()
