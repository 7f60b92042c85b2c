# Run by CPack on the installed files just before it packs them: what a package needs beyond an installation.
#
# A .deb keeps some things elsewhere, or compressed, and describes itself in two files of its own. All packages get the
# time of SOURCE_DATE_EPOCH, if that is set, so that they do not depend on when they were made.

cmake_minimum_required(VERSION 3.25)

set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}")
set(epoch "$ENV{SOURCE_DATE_EPOCH}")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(compress file)
  run(gzip -9n "${file}")
endfunction()

function(arrange_program share)
  # Where Debian's own zsh looks for the completions of packages.
  file(MAKE_DIRECTORY "${share}/zsh")
  file(RENAME "${share}/zsh/site-functions" "${share}/zsh/vendor-completions")
  file(GLOB pages "${share}/man/man1/*.1")
  foreach(page IN LISTS pages)
    compress("${page}")
  endforeach()
endfunction()

function(describe package share)
  # What Debian calls the copyright file. There is no licence to state in it; that is the owner's to give.
  file(WRITE "${share}/doc/${package}/copyright" "${CPACK_QNPP_COPYRIGHT}\n")

  # RFC 2822 wants English names, which date(1) gives in the C locale.
  set(moment now)
  if(NOT epoch STREQUAL "")
    set(moment "@${epoch}")
  endif()
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C TZ=UTC date -R -d "${moment}"
    OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  file(WRITE "${share}/doc/${package}/changelog" "\
qnpp (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Release ${CPACK_PACKAGE_VERSION} \"${CPACK_QNPP_RELEASE_NAME}\".

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  compress("${share}/doc/${package}/changelog")
endfunction()

if(CPACK_GENERATOR STREQUAL "DEB")
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER "${component}" name)
    set(share "${root}/${component}/usr/share")
    describe("${CPACK_DEBIAN_${name}_PACKAGE_NAME}" "${share}")
    if(component STREQUAL "program")
      arrange_program("${share}")
    endif()
  endforeach()
endif()

# Everybody can enter the folders and read the files, whatever the umask of the maker.
run(chmod -R u=rwX,go=rX "${root}")
if(NOT epoch STREQUAL "")
  run(find "${root}" -exec touch -h -d "@${epoch}" "{}" +)
endif()
