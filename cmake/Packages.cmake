# The packages: `cpack` in the build folder makes qnpp-<version>-<system>.tar.gz with everything in it, and a .deb each for
# the program (qnpp), for those who build with the library (libqnpp-dev) and, if it is shared, for those who run what was
# built so (libqnpp1).
#
# With SOURCE_DATE_EPOCH in the environment, of the build and of cpack, they come out the same byte for byte wherever they
# are made.

set(QNPP_PACKAGE_CONTACT "Quenley <qnpp@quenley.invalid>" CACHE STRING
  "Who is responsible for packages. A .deb must name an address; one that ends in .invalid says that there is none.")

set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_NAME qnpp)
set(CPACK_PACKAGE_VENDOR Quenley)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "${QNPP_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "standalone C-style preprocessor")
set(CPACK_PACKAGE_DESCRIPTION "\
qnpp carries out preprocessing directives, expands macros and writes the
result as text with line directives. It works on any C-like text: interface
definitions, shaders, linker scripts, tables.
.
The package also holds companions for builds, for seeing how a result came
about and for finding likely mistakes, and what builds need to use them:
files for CMake, pkg-config, make, Ninja and Bazel.")
set(CPACK_PACKAGE_FILE_NAME "qnpp-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_STRIP_FILES TRUE)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_SOURCE_DIR}/packaging/arrange.cmake")
set(CPACK_QNPP_COPYRIGHT "${QNPP_COPYRIGHT}")
set(CPACK_QNPP_RELEASE_NAME "${QNPP_RELEASE_NAME}")

find_program(DPKG_DEB dpkg-deb)
if(DPKG_DEB)
  list(APPEND CPACK_GENERATOR DEB)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION devel)
  set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
  set(CPACK_COMPONENTS_ALL program development)
  set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME qnpp)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqnpp-dev)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
  set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "\
qnpp is a program, and a library for programs that want to preprocess
texts themselves, from memory if they like.
.
This package holds the library and its headers, for C++ and for C.")
  # The files for CMake lie beside those of the program.
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "qnpp (= ${PROJECT_VERSION})")
  if(QNPP_SHARED_LIBRARY)
    set(runtimePackage "libqnpp${PROJECT_VERSION_MAJOR}")
    list(APPEND CPACK_COMPONENTS_ALL library)
    set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME "${runtimePackage}")
    set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
    set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "This package holds the library, for programs that were linked with it.")
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
    file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/package/triggers" "activate-noawait ldconfig\n")
    set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_BINARY_DIR}/package/triggers")
    string(APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ", ${runtimePackage} (= ${PROJECT_VERSION})")
  endif()
  # What the program and the shared library depend on, with versions; CPack wants both programs for that.
  find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
  find_program(FILE_PROGRAM file)
  if(DPKG_SHLIBDEPS AND FILE_PROGRAM)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  else()
    set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "libc6")
    set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "libc6, libstdc++6, libgcc-s1")
  endif()
endif()

mark_as_advanced(DPKG_DEB DPKG_SHLIBDEPS FILE_PROGRAM)

include(CPack)
