# Preprocesses one source for qnpp_preprocess() and writes down what the result depends on.
#
#   cmake -DPROGRAM=<qnpp> -DJOB=<file written by qnpp_preprocess()> -P QnppRun.cmake
#
# The result appears under its name only when it is complete and without errors; until then there is none.

cmake_minimum_required(VERSION 3.22)

# Every file that qnpp opens shows as `#line 1 "name"` in the output, whatever names `#line` gives later. Leaves the
# distinct names in `names`, with the characters that a CMake list cannot hold replaced by control characters.
function(read_line_directives file)
  file(READ "${file}" text)
  string(LENGTH "${text}" length)
  file(SIZE "${file}" size)
  if(NOT length EQUAL size)
    # A NUL byte in the output, at which file(READ) gives up.
    file(STRINGS "${file}" lines REGEX "^#line " ENCODING UTF-8)
    string(REPLACE "\\;" "${semicolon}" lines "${lines}")
    string(REPLACE ";" "\n" text "${lines}")
  endif()
  string(REPLACE ";" "${semicolon}" text "\n${text}")
  string(REPLACE "[" "${openingBracket}" text "${text}")
  string(REPLACE "]" "${closingBracket}" text "${text}")
  string(REGEX MATCHALL "\n#line -?[0-9]+ \"[^\n]*\"" directives "${text}")
  list(TRANSFORM directives REPLACE "^\n#line -?[0-9]+ \"" "")
  list(REMOVE_DUPLICATES directives)
  set(names "${directives}" PARENT_SCOPE)
endfunction()

# A depfile has no spelling for some characters that file names may have, and the build tools differ in the others. A file
# with such a name is depended on by way of a link with a harmless one.
function(append_dependency file)
  if(file MATCHES "[]\t\r[!\"#$%&'()*,:;<=>?\\^`{|}~]")
    string(MD5 link "${file}")
    set(link "${links}/${link}")
    file(MAKE_DIRECTORY "${links}")
    file(CREATE_LINK "${file}" "${link}" SYMBOLIC)
    set(file "${link}")
  endif()
  append_name("${file}")
  set(dependencies "${dependencies}" PARENT_SCOPE)
endfunction()

function(append_name name)
  string(REPLACE "\\" "\\\\" name "${name}")
  string(REPLACE " " "\\ " name "${name}")
  string(REPLACE "#" "\\#" name "${name}")
  string(REPLACE "$" "$$" name "${name}")
  set(dependencies "${dependencies}${name}" PARENT_SCOPE)
endfunction()

include("${JOB}")
string(ASCII 1 semicolon)
string(ASCII 2 openingBracket)
string(ASCII 3 closingBracket)

file(REMOVE "${output}" "${part}")
cmake_path(GET output PARENT_PATH outputDirectory)
file(MAKE_DIRECTORY "${outputDirectory}")
run_qnpp()
if(NOT status EQUAL 0)
  file(REMOVE "${part}")
  message(FATAL_ERROR "qnpp failed on ${source} (${status})")
endif()

read_line_directives("${part}")
set(dependencies "")
append_name("${output}")
string(APPEND dependencies ":")
# The source always counts, even if its first line directive should not name it as it is.
string(APPEND dependencies " \\\n  ")
append_dependency("${source}")
foreach(name IN LISTS names)
  string(REGEX REPLACE "\"$" "" name "${name}")
  string(REPLACE "${semicolon}" ";" name "${name}")
  string(REPLACE "${openingBracket}" "[" name "${name}")
  string(REPLACE "${closingBracket}" "]" name "${name}")
  string(REPLACE "\\\\" "\\" name "${name}")
  if(NOT IS_ABSOLUTE "${name}")
    set(name "${workingDirectory}/${name}")
  endif()
  # A `#line` directive of the source may give any name it likes; only files can be depended on.
  if(NOT name STREQUAL source AND EXISTS "${name}" AND NOT IS_DIRECTORY "${name}")
    string(APPEND dependencies " \\\n  ")
    append_dependency("${name}")
  endif()
endforeach()
file(WRITE "${depfile}" "${dependencies}\n")
if(NOT knownDependencies STREQUAL "")
  file(REMOVE "${knownDependencies}")
endif()

file(RENAME "${part}" "${output}")
