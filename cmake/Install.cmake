# What `cmake --install` puts where, and the packages that CPack makes of it.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# A project that takes qnpp in as a subfolder uses the same names as one that finds it installed.
# A companion is there if the libraries that it uses are.
set(programs qnpp)
foreach(companion qnpp-build qnpp-explain qnpp-check)
  if(TARGET ${companion})
    list(APPEND programs ${companion})
  endif()
endforeach()
foreach(program IN LISTS programs)
  add_executable(qnpp::${program} ALIAS ${program})
endforeach()
include(cmake/package/QnppPreprocess.cmake)

if(NOT QNPP_INSTALL)
  return()
endif()

# Whatever names no component of its own belongs to the program.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME program)

# ---- The program and the header of its version functions. ----

install(TARGETS ${programs} EXPORT qnppTargets RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(FILES include/qnpp/version.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/qnpp")

# ---- The library: what is needed to run what uses it, and what is needed to build that. ----

install(TARGETS ${publicLibrary} EXPORT qnppLibraryTargets
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development)
install(FILES include/qnpp/preprocessor.h include/qnpp/preprocessor-c.h
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/qnpp" COMPONENT development)
# Beside the files for the program, whose package may be installed alone.
install(EXPORT qnppLibraryTargets NAMESPACE qnpp:: DESTINATION "${CMAKE_INSTALL_DATADIR}/cmake/qnpp"
  COMPONENT development)
# Those who link the archive by a compiler for C have to name the library of C++.
set(privateLibraries "-lstdc++")
if(QNPP_SHARED_LIBRARY)
  set(privateLibraries "")
endif()
file(RELATIVE_PATH libraryToPrefix "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
string(REGEX REPLACE "/$" "" libraryToPrefix "${libraryToPrefix}")
configure_file(integrations/pkg-config/libqnpp.pc.in package/libqnpp.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/package/libqnpp.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT development)

# ---- For builds that use it: CMake, pkg-config, make, Ninja, Bazel. ----

set(packageDir "${CMAKE_INSTALL_DATADIR}/cmake/qnpp")
install(EXPORT qnppTargets NAMESPACE qnpp:: DESTINATION "${packageDir}")
# A program serves a build for any processor, so the version file does not compare pointer sizes.
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/package/qnppConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(
  FILES
    cmake/package/qnppConfig.cmake
    cmake/package/QnppPreprocess.cmake
    "${CMAKE_CURRENT_BINARY_DIR}/package/qnppConfigVersion.cmake"
  DESTINATION "${packageDir}")

# Named from the place of the file itself, so that an installation can be moved.
file(RELATIVE_PATH pathToPrefix "/prefix/${CMAKE_INSTALL_DATADIR}/pkgconfig" "/prefix")
string(REGEX REPLACE "/$" "" pathToPrefix "${pathToPrefix}")
configure_file(integrations/pkg-config/qnpp.pc.in package/qnpp.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/package/qnpp.pc" DESTINATION "${CMAKE_INSTALL_DATADIR}/pkgconfig")
install(FILES integrations/make/qnpp.mk integrations/ninja/qnpp.ninja DESTINATION "${CMAKE_INSTALL_DATADIR}/qnpp")
install(DIRECTORY integrations/bazel DESTINATION "${CMAKE_INSTALL_DATADIR}/qnpp")

# ---- For people: manual, completions, editors, documents. ----

find_program(AWK NAMES awk mawk gawk DOC "Makes the page for man(1) from the manual in Markdown")
if(AWK)
  foreach(program IN LISTS programs)
    set(page "${PROJECT_BINARY_DIR}/${program}.1")
    set(source "${PROJECT_SOURCE_DIR}")
    add_custom_command(
      OUTPUT "${page}"
      COMMAND "${CMAKE_COMMAND}" "-DAWK=${AWK}" "-DSOURCE_DIR=${source}" "-DPROGRAM=${program}" "-DOUTPUT=${page}"
              -P "${source}/cmake/WriteManPage.cmake"
      DEPENDS "${source}/docs/${program}.1.md" "${source}/cmake/MarkdownToMan.awk" "${source}/cmake/WriteManPage.cmake"
              "${source}/cmake/Version.cmake"
      COMMENT "Making the man page of ${program}"
      VERBATIM)
    add_custom_target(${program}_man ALL DEPENDS "${page}")
    install(FILES "${page}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  endforeach()
else()
  message(WARNING "awk not found: the man pages are neither made nor installed")
endif()

foreach(program IN LISTS programs)
  install(FILES completions/${program}.bash DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
          RENAME ${program})
  install(FILES completions/_${program} DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
  install(FILES completions/${program}.fish DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
endforeach()

install(FILES integrations/vim/compiler/qnpp.vim DESTINATION "${CMAKE_INSTALL_DATADIR}/vim/vimfiles/compiler")
install(FILES integrations/emacs/qnpp.el DESTINATION "${CMAKE_INSTALL_DATADIR}/emacs/site-lisp")
install(FILES integrations/ci/qnpp-problem-matcher.json DESTINATION "${CMAKE_INSTALL_DATADIR}/qnpp")
if(TARGET qnpp-explain)
  install(FILES tools/explain/explain.schema.json DESTINATION "${CMAKE_INSTALL_DATADIR}/qnpp")
endif()

# In the folders that they have here: they refer to one another.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
file(GLOB documents CONFIGURE_DEPENDS docs/*.md)
install(FILES ${documents} DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
install(DIRECTORY docs/images DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
install(DIRECTORY examples DESTINATION "${CMAKE_INSTALL_DOCDIR}" PATTERN "*.sh" EXCLUDE)
install(PROGRAMS examples/build-pkg-config/build.sh DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples/build-pkg-config")

if(PROJECT_IS_TOP_LEVEL)
  include(cmake/Packages.cmake)
endif()
