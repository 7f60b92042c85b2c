#[[
qnpp_preprocess(TARGET <target>
                SOURCES <name>...
                [INCLUDE_DIRECTORIES <directory>...]
                [DEFINITIONS <name>[=<text>]...]
                [OUTPUT_DIRECTORY <directory>]
                [OUTPUT_NAME <name>]
                [OUT_VAR <variable>]
                [SOURCE_NAME <name>]
                [LINE_DIRECTIVES hash|gnu|glsl|none]
                [OPTIONS <word>...])

Preprocesses each source by qnpp-build when the target is built, and adds the results to the sources of the target. The
manual of qnpp-build tells what comes of it, and what the words mean.

The program is the target qnpp::qnpp-build, or what the variable QNPP_EXECUTABLE names: a build for another processor
may find the files of a qnpp that does not run here.
]]

cmake_policy(PUSH)
cmake_policy(VERSION 3.25)

# The arguments are walked by hand, one ARGVn after the other, because a CMake list cannot hold every text: an element with
# a lone "[" would swallow those behind it.
function(qnpp_preprocess)
  set(target "")
  set(outVar "")
  set(outputName "")
  set(outputDirectory "")
  set(sourceCount 0)
  # The words for qnpp-build, one a line, generator expressions included.
  set(words "")

  string(JOIN "|" keywords TARGET SOURCES INCLUDE_DIRECTORIES DEFINITIONS OUTPUT_DIRECTORY OUTPUT_NAME OUT_VAR
    SOURCE_NAME LINE_DIRECTIVES OPTIONS)
  set(keyword "")
  set(i 0)
  while(i LESS ARGC)
    set(value "${ARGV${i}}")
    math(EXPR i "${i} + 1")
    if(value MATCHES "\n")
      message(FATAL_ERROR "qnpp_preprocess: a word holds a line end: \"${value}\"")
    elseif(value MATCHES "^(${keywords})$")
      set(keyword "${value}")
    elseif(keyword STREQUAL "TARGET")
      set(target "${value}")
    elseif(keyword STREQUAL "SOURCES")
      set(source_${sourceCount} "${value}")
      math(EXPR sourceCount "${sourceCount} + 1")
    elseif(keyword STREQUAL "INCLUDE_DIRECTORIES")
      if(NOT value MATCHES "^\\$<")
        cmake_path(ABSOLUTE_PATH value NORMALIZE)
      endif()
      _qnpp_add_word("-I" "${value}")
    elseif(keyword STREQUAL "DEFINITIONS")
      string(REGEX REPLACE "^-D" "" value "${value}")
      if(value STREQUAL "")
        message(FATAL_ERROR "qnpp_preprocess: a definition is empty")
      endif()
      _qnpp_add_word("-D" "${value}")
    elseif(keyword STREQUAL "OUTPUT_DIRECTORY")
      set(outputDirectory "${value}")
    elseif(keyword STREQUAL "OUTPUT_NAME")
      set(outputName "${value}")
    elseif(keyword STREQUAL "OUT_VAR")
      set(outVar "${value}")
    elseif(keyword STREQUAL "SOURCE_NAME")
      _qnpp_literal("${value}" value)
      _qnpp_add_word("--source-name=" "${value}")
    elseif(keyword STREQUAL "LINE_DIRECTIVES")
      _qnpp_add_word("--line-directives=" "${value}")
    elseif(keyword STREQUAL "OPTIONS")
      _qnpp_add_word("" "${value}")
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
  if(sourceCount GREATER 1 AND NOT outputName STREQUAL "")
    message(FATAL_ERROR "qnpp_preprocess: OUTPUT_NAME is for one source, and there are ${sourceCount}")
  endif()
  # What a build tool or a shell might take for something else.
  set(odd "[]\t\r[!\"#$%&'()*:;<=>?\\^`{|}~]")
  if("${outputDirectory}/${outputName}" MATCHES "${odd}")
    message(FATAL_ERROR
      "qnpp_preprocess: no result can be called \"${outputDirectory}/${outputName}\", "
      "because of the \"${CMAKE_MATCH_0}\"")
  endif()
  # One result for each configuration: definitions may differ.
  set(defaultDirectory "${CMAKE_CURRENT_BINARY_DIR}")
  get_property(isMultiConfig GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
  if(isMultiConfig)
    string(APPEND defaultDirectory "/$<CONFIG>")
  endif()
  if(outputDirectory STREQUAL "")
    set(outputDirectory "${defaultDirectory}")
  elseif(NOT IS_ABSOLUTE "${outputDirectory}")
    set(outputDirectory "${defaultDirectory}/${outputDirectory}")
  elseif(isMultiConfig)
    string(APPEND outputDirectory "/$<CONFIG>")
  endif()

  set(outputs "")
  set(i 0)
  while(i LESS sourceCount)
    _qnpp_preprocess_one("${source_${i}}")
    list(APPEND outputs "${output}")
    math(EXPR i "${i} + 1")
  endwhile()
  target_sources("${target}" PRIVATE "${outputs}")
  if(NOT outVar STREQUAL "")
    set("${outVar}" "${outputs}" PARENT_SCOPE)
  endif()
endfunction()

# Appends option and value to `words`. If the value is a generator expression as a whole, it may be a list, or nothing.
function(_qnpp_add_word option value)
  if(value MATCHES "^\\$<.*>$")
    set(word "$<$<NOT:$<STREQUAL:${value},>>:${option}$<JOIN:${value},\n${option}>>")
  else()
    set(word "${option}${value}")
  endif()
  set(words "${words}${word}\n" PARENT_SCOPE)
endfunction()

# A name in which no generator expression is meant.
function(_qnpp_literal name result)
  string(REPLACE "$<" "$<1:$><" name "${name}")
  set("${result}" "${name}" PARENT_SCOPE)
endfunction()

# Where the result goes, into `output`: the name keeps its folder below the current source or binary directory.
function(_qnpp_output_of source)
  set(name "${outputName}")
  if(name STREQUAL "")
    cmake_path(GET source FILENAME name)
    foreach(base IN ITEMS "${CMAKE_CURRENT_BINARY_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
      cmake_path(IS_PREFIX base "${source}" isBelow)
      if(isBelow)
        string(LENGTH "${base}/" length)
        string(SUBSTRING "${source}" ${length} -1 name)
        break()
      endif()
    endforeach()
    string(REGEX REPLACE "\\.in$" "" name "${name}")
    string(REGEX REPLACE "${odd}" "_" name "${name}")
  endif()
  set(output "${outputDirectory}/${name}" PARENT_SCOPE)
endfunction()

function(_qnpp_preprocess_one source)
  cmake_path(ABSOLUTE_PATH source NORMALIZE)
  _qnpp_output_of("${source}")
  set(output "${output}" PARENT_SCOPE)
  if(output STREQUAL source)
    message(FATAL_ERROR "qnpp_preprocess: \"${source}\" would become itself; name an OUTPUT_DIRECTORY or OUTPUT_NAME")
  endif()
  get_property(owner DIRECTORY PROPERTY "_qnpp_source_of_${output}")
  if(owner)
    message(FATAL_ERROR "qnpp_preprocess: \"${owner}\" and \"${source}\" would both become \"${output}\"")
  endif()
  set_property(DIRECTORY PROPERTY "_qnpp_source_of_${output}" "${source}")

  # Everything else about the result lies in a folder of its own, so that none of it can be taken for a source.
  string(MD5 folder "${output}")
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/qnpp/${folder}")
  set(depfile "${folder}/depfile")
  set(wordsFile "${folder}/words")
  if(isMultiConfig)
    string(APPEND depfile "-$<CONFIG>")
    string(APPEND wordsFile "-$<CONFIG>")
    foreach(config IN LISTS CMAKE_CONFIGURATION_TYPES)
      string(REPLACE "$<CONFIG>" "${config}" directory "${output}")
      cmake_path(GET directory PARENT_PATH directory)
      file(MAKE_DIRECTORY "${directory}")
    endforeach()
  else()
    cmake_path(GET output PARENT_PATH directory)
    file(MAKE_DIRECTORY "${directory}")
  endif()
  file(MAKE_DIRECTORY "${folder}")

  if(NOT "${QNPP_EXECUTABLE}" STREQUAL "")
    if(NOT EXISTS "${QNPP_EXECUTABLE}")
      message(FATAL_ERROR "qnpp_preprocess: QNPP_EXECUTABLE names no file: \"${QNPP_EXECUTABLE}\"")
    endif()
    set(program "${QNPP_EXECUTABLE}")
  elseif(TARGET qnpp::qnpp-build)
    set(program "$<TARGET_FILE:qnpp::qnpp-build>")
  else()
    message(FATAL_ERROR "qnpp_preprocess: this qnpp was built without qnpp-build")
  endif()

  # CMake would pass the source by words that a build tool or a shell could mistake for something else, and make looks at
  # no command to see whether it has changed. A file with all words serves both.
  _qnpp_literal("${source}" literalSource)
  set(allWords "${words}--keep-unchanged\n--depfile-format=cmake\n-MF\n${depfile}\n-o\n${output}\n${literalSource}\n")

  # A source may itself be made by the build, so it has to be named here too. With an odd name it cannot be, and the
  # dependency file alone says that the result depends on it.
  set(namedSource "${source}")
  if(source MATCHES "${odd}")
    set(namedSource "")
    if(NOT EXISTS "${source}")
      message(FATAL_ERROR
        "qnpp_preprocess: there is no \"${source}\", and a source made by the build cannot have this name")
    endif()
  endif()
  set(command "${program}" "--options-from=${wordsFile}")
  set(prerequisites ${namedSource} "${wordsFile}" "${program}")

  cmake_path(GET source FILENAME name)
  if(CMAKE_GENERATOR MATCHES "Makefiles")
    if(folder MATCHES " ")
      message(FATAL_ERROR
        "qnpp_preprocess: in a build folder with a blank in its name (${CMAKE_CURRENT_BINARY_DIR}), "
        "CMake's Makefiles lose dependencies; use Ninja, or another folder")
    endif()
    # make takes a result that is older than what it was made from for out of date, also if it was left as it was. So the
    # dependency file stands for it, and the result follows: qnpp-build writes it last. Where it is older, or gone, it is
    # made again, without a word because mostly nothing comes of it.
    #
    # Generators for make (up to CMake 3.25 at least) add what a new dependency file says to what they know, but take
    # nothing away, so that a header would count for ever, and one that is gone would make the result out of date for
    # ever. Without this file they read the dependency files of the target afresh.
    set(known "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${target}.dir/compiler_depend.internal")
    string(APPEND allWords "-MT\n${depfile}\n")
    add_custom_command(
      OUTPUT "${depfile}"
      COMMAND ${command}
      COMMAND "${CMAKE_COMMAND}" -E rm -f "${known}"
      DEPENDS ${prerequisites}
      DEPFILE "${depfile}"
      WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}"
      COMMENT "Preprocessing ${name}"
      VERBATIM)
    add_custom_command(OUTPUT "${output}" COMMAND ${command} DEPENDS "${depfile}" COMMENT ""
      WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" VERBATIM)
  else()
    # By policy CMP0116, which is on here, CMake translates the absolute names of the file into those of Ninja.
    add_custom_command(
      OUTPUT "${output}"
      COMMAND ${command}
      DEPENDS ${prerequisites}
      DEPFILE "${depfile}"
      WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}"
      COMMENT "Preprocessing ${name}"
      VERBATIM)
  endif()
  file(GENERATE OUTPUT "${wordsFile}" CONTENT "${allWords}" TARGET "${target}")
endfunction()

cmake_policy(POP)
