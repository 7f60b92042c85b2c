# Writes the header with what a build knows about itself. Runs at every build, so that a new commit is seen without
# configuring again, and leaves the file alone when nothing has changed, so that nothing is compiled again.
#
#   cmake -DSOURCE_DIR=<checkout> -DOUTPUT=<header> -P WriteBuildInfo.cmake
#
# The date is a day in UTC. With SOURCE_DATE_EPOCH in the environment it is the day of that moment, and two builds of one
# revision are then equal byte for byte.

cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/Version.cmake)

string(REPLACE "." ";" numbers "${QNPP_VERSION}")
list(GET numbers 0 major)
list(GET numbers 1 minor)
list(GET numbers 2 patch)

# The form that the compiler gives __DATE__: "Mar  5 2026". string(TIMESTAMP) knows SOURCE_DATE_EPOCH; the name of the
# month is looked up here because its %b would follow the locale.
string(TIMESTAMP date "%Y;%m;%d" UTC)
list(GET date 0 year)
list(GET date 1 month)
list(GET date 2 day)
set(monthNames none Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec)
string(REGEX REPLACE "^0" "" month "${month}")
list(GET monthNames ${month} monthName)
string(REGEX REPLACE "^0" " " day "${day}")

# Only a checkout of this project has a revision of its own: unpacked inside some other repository, git would answer with
# the revision of that one. Naming the folder as safe makes git answer for a checkout that belongs to another user too, as
# one mounted into a container does.
set(revision "unknown")
find_program(GIT_EXECUTABLE git)
if(GIT_EXECUTABLE AND EXISTS "${SOURCE_DIR}/.git")
  execute_process(
    COMMAND "${GIT_EXECUTABLE}" -c "safe.directory=${SOURCE_DIR}" rev-parse --verify --quiet --short=10 HEAD
    WORKING_DIRECTORY "${SOURCE_DIR}"
    OUTPUT_VARIABLE answer
    OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_QUIET
    RESULT_VARIABLE status)
  if(status EQUAL 0 AND answer)
    set(revision "${answer}")
  endif()
endif()

file(CONFIGURE OUTPUT "${OUTPUT}" @ONLY CONTENT [=[
// Written by cmake/WriteBuildInfo.cmake at build time.
#pragma once

namespace build_info {

inline constexpr int kMajor = @major@;
inline constexpr int kMinor = @minor@;
inline constexpr int kPatch = @patch@;
inline constexpr const char* kDate = "@monthName@ @day@ @year@";
inline constexpr const char* kIdentifierSuffix = ", @revision@";
inline constexpr const char* kReleaseName = R"text(@QNPP_RELEASE_NAME@)text";
inline constexpr const char* kCopyright = R"text(@QNPP_COPYRIGHT@)text";

}  // namespace build_info
]=])
