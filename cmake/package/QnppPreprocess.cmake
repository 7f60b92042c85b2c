#[[
qnpp_preprocess(TARGET <target>
                SOURCES <name>.in...
                [INCLUDE_DIRECTORIES <directory>...]
                [DEFINITIONS <name>[=<text>]...]
                [OUTPUT_DIRECTORY <directory>])

Preprocesses each source when the target is built, and adds the results to the sources of the target: `table.c.in` becomes
`table.c` in the output directory, which is the current binary directory unless another one is named. A relative source or
include directory starts at the current source directory, a relative output directory at the current binary directory.

A result is made again when its source, any header reached from it, the arguments above or qnpp itself has changed. When
qnpp reports an error, the build stops and the result does not exist.

Names may hold blanks, semicolons and characters beyond ASCII. One thing cannot be had: CMake has no sources with a
semicolon in their name, so `a;b.c.in` becomes `a_b.c`.

The target must have been created in the folder (CMakeLists.txt) that calls the function.
]]

cmake_policy(PUSH)
cmake_policy(VERSION 3.22)

set(QNPP_RUN_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/QnppRun.cmake" CACHE INTERNAL "Runs qnpp for qnpp_preprocess()")

# The arguments are walked by hand, one ARGVn after the other, because a CMake list cannot hold every text: an element with
# a lone "[" would swallow those behind it.
function(qnpp_preprocess)
  set(target "")
  set(outputDirectory "${CMAKE_CURRENT_BINARY_DIR}")
  set(sourceCount 0)
  # The words for qnpp as CMake code, each in brackets, in which nothing is special.
  set(words "")

  set(keyword "")
  set(i 0)
  while(i LESS ARGC)
    set(value "${ARGV${i}}")
    math(EXPR i "${i} + 1")
    if(value MATCHES "^(TARGET|SOURCES|INCLUDE_DIRECTORIES|DEFINITIONS|OUTPUT_DIRECTORY)$")
      set(keyword "${value}")
    elseif(keyword STREQUAL "TARGET")
      set(target "${value}")
    elseif(keyword STREQUAL "SOURCES")
      set(source_${sourceCount} "${value}")
      math(EXPR sourceCount "${sourceCount} + 1")
    elseif(keyword STREQUAL "INCLUDE_DIRECTORIES")
      cmake_path(ABSOLUTE_PATH value NORMALIZE OUTPUT_VARIABLE directory)
      string(APPEND words " [======[-I${directory}]======]")
    elseif(keyword STREQUAL "DEFINITIONS")
      string(REGEX REPLACE "^-D" "" value "${value}")
      if(value STREQUAL "")
        message(FATAL_ERROR "qnpp_preprocess: a definition is empty")
      endif()
      string(APPEND words " [======[-D${value}]======]")
    elseif(keyword STREQUAL "OUTPUT_DIRECTORY")
      cmake_path(ABSOLUTE_PATH value BASE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}" NORMALIZE OUTPUT_VARIABLE outputDirectory)
    else()
      message(FATAL_ERROR "qnpp_preprocess: \"${value}\" stands before the first keyword")
    endif()
  endwhile()

  if(NOT TARGET "${target}")
    message(FATAL_ERROR "qnpp_preprocess: TARGET must name a target, and \"${target}\" is none")
  endif()
  get_target_property(targetFolder "${target}" SOURCE_DIR)
  if(NOT targetFolder STREQUAL CMAKE_CURRENT_SOURCE_DIR)
    message(FATAL_ERROR "qnpp_preprocess: the target \"${target}\" was created in another folder, ${targetFolder}")
  endif()
  if(sourceCount EQUAL 0)
    message(FATAL_ERROR "qnpp_preprocess: SOURCES must name a source")
  endif()
  if(outputDirectory MATCHES ";")
    message(FATAL_ERROR "qnpp_preprocess: CMake cannot build files in \"${outputDirectory}\", because of the semicolon")
  endif()

  set(i 0)
  while(i LESS sourceCount)
    _qnpp_preprocess_one("${target}" "${source_${i}}" "${outputDirectory}" "${words}")
    math(EXPR i "${i} + 1")
  endwhile()
endfunction()

function(_qnpp_preprocess_one target source outputDirectory words)
  cmake_path(ABSOLUTE_PATH source NORMALIZE)
  if(NOT source MATCHES "/([^/]+)\\.in$")
    message(FATAL_ERROR "qnpp_preprocess: the name of the source \"${source}\" does not end in \".in\"")
  endif()
  string(REPLACE ";" "_" name "${CMAKE_MATCH_1}")
  set(output "${outputDirectory}/${name}")

  # Everything else about the result lies in a folder of its own, so that none of it can be taken for a source.
  string(MD5 folder "${output}")
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/qnpp/${folder}")

  get_property(owner DIRECTORY PROPERTY "_qnpp_source_of_${output}")
  if(owner)
    message(FATAL_ERROR "qnpp_preprocess: \"${owner}\" and \"${source}\" would both become \"${output}\"")
  endif()
  set_property(DIRECTORY PROPERTY "_qnpp_source_of_${output}" "${source}")

  # Generators for make (up to CMake 3.25 at least) add what a new depfile says to what they know, but take nothing away, so
  # that a header would count for ever, and one that is gone would make the result out of date for ever. Without this file
  # they read the depfiles of the target afresh.
  set(knownDependencies "")
  if(CMAKE_GENERATOR MATCHES "Makefiles")
    set(knownDependencies "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${target}.dir/compiler_depend.internal")
  endif()

  # The job carries every name and text that a build tool or a shell could mistake for something else.
  _qnpp_write_if_different("${folder}/job.cmake" "\
# Written by qnpp_preprocess() for QnppRun.cmake.
set(source [======[${source}]======])
set(output [======[${output}]======])
set(part [======[${output}.part]======])
set(workingDirectory [======[${CMAKE_CURRENT_SOURCE_DIR}]======])
set(depfile [======[${folder}/depfile]======])
set(links [======[${folder}/links]======])
set(knownDependencies [======[${knownDependencies}]======])
macro(run_qnpp)
  execute_process(
    COMMAND \"\${PROGRAM}\"${words} -o \"\${part}\" \"\${source}\"
    WORKING_DIRECTORY \"\${workingDirectory}\"
    RESULT_VARIABLE status)
endmacro()
")

  # A source may itself be made by the build, so it has to be named here too; with a semicolon in its name it cannot be,
  # and the depfile alone says that the result depends on it.
  set(namedSource "${source}")
  if(source MATCHES ";")
    set(namedSource "")
  endif()

  # By policy CMP0116, which is on here, CMake translates the absolute names of the depfile into those of the build tool.
  add_custom_command(
    OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" "-DPROGRAM=$<TARGET_FILE:qnpp::qnpp>" "-DJOB=${folder}/job.cmake" -P "${QNPP_RUN_SCRIPT}"
    DEPENDS ${namedSource} "${folder}/job.cmake" "$<TARGET_FILE:qnpp::qnpp>" "${QNPP_RUN_SCRIPT}"
    DEPFILE "${folder}/depfile"
    COMMENT "Preprocessing ${name}.in"
    VERBATIM)
  target_sources("${target}" PRIVATE "${output}")
endfunction()

function(_qnpp_write_if_different file content)
  set(before "")
  if(EXISTS "${file}")
    file(READ "${file}" before)
  endif()
  if(NOT before STREQUAL content)
    file(WRITE "${file}" "${content}")
  endif()
endfunction()

cmake_policy(POP)
