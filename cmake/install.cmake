# Installed like a system tool: the program, its manual page, the example
# formula files, the licence, the changelog and the bash completion; and the
# Debian package of them.
# Included from the top-level CMakeLists.txt.
include(GNUInstallDirs)

# The changelog's newest entry names the version; the two must agree.
file(STRINGS ${PROJECT_SOURCE_DIR}/debian/changelog changelog_head LIMIT_COUNT 1)
if(NOT changelog_head MATCHES "^vexa \\(${PROJECT_VERSION}\\) ")
  message(FATAL_ERROR "debian/changelog begins '${changelog_head}', not version ${PROJECT_VERSION}")
endif()
file(STRINGS ${PROJECT_SOURCE_DIR}/debian/changelog changelog_trailer REGEX "^ -- " LIMIT_COUNT 1)
string(REGEX REPLACE "^.*>  " "" changelog_date "${changelog_trailer}")

# Runs before anything is installed. Every install rewrites the build folder's
# install_manifest.txt, and one left there by an install as another user (as
# root, through sudo) cannot be rewritten: it is removed first, which the owner
# of the build folder may do. And the folders of the prefix that are missing yet
# are noted, so that uninstalling removes the folders this install made and never
# one it found. An install into DESTDIR stages a package, whose folders are the
# package manager's.
set(completions_dir ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
set(vexa_destinations ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_MANDIR}/man1 ${CMAKE_INSTALL_DOCDIR}/examples
    ${completions_dir})
string(CONFIGURE [[
  set(vexa_manifest "@PROJECT_BINARY_DIR@/install_manifest.txt")
  file(REMOVE "${vexa_manifest}")
  if(EXISTS "${vexa_manifest}")
    message(FATAL_ERROR "Cannot replace ${vexa_manifest}, which an install as another user "
                        "(with sudo) left in a build folder that you may not write to. Install "
                        "from a build folder of your own, or remove the file with: "
                        "sudo rm '${vexa_manifest}'")
  endif()
  set(vexa_made_folders "")
  if("$ENV{DESTDIR}" STREQUAL "")
    foreach(folder @vexa_destinations@)
      while(folder AND NOT IS_DIRECTORY "${CMAKE_INSTALL_PREFIX}/${folder}")
        list(APPEND vexa_made_folders "${folder}")
        get_filename_component(folder "${folder}" DIRECTORY)
      endwhile()
    endforeach()
  endif()
]] record_folders @ONLY)
install(CODE "${record_folders}")

# The packaged binary keeps no .comment or .note section: they hold only the
# compiler's name and nothing a user of the program needs.
install(TARGETS vexa RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(CODE "
  if(CMAKE_INSTALL_DO_STRIP)
    execute_process(COMMAND ${CMAKE_STRIP} --remove-section=.comment --remove-section=.note
                    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/vexa\")
  endif()")

# Debian ships manual pages and changelogs gzip-compressed, without a time stamp
# (-n) so that two builds give the same bytes; man reads either form. The page's
# footer shows the project's version.
find_program(GZIP gzip)
configure_file(${PROJECT_SOURCE_DIR}/man/vexa.1 ${PROJECT_BINARY_DIR}/man/vexa.1 @ONLY)
set(man_page ${PROJECT_BINARY_DIR}/man/vexa.1)
set(changelog ${PROJECT_SOURCE_DIR}/debian/changelog)
if(GZIP)
  add_custom_command(OUTPUT ${man_page}.gz ${PROJECT_BINARY_DIR}/changelog.gz
    COMMAND ${GZIP} -9 -n -c ${man_page} > ${man_page}.gz
    COMMAND ${GZIP} -9 -n -c ${changelog} > ${PROJECT_BINARY_DIR}/changelog.gz
    DEPENDS ${man_page} ${changelog}
    VERBATIM)
  set(man_page ${man_page}.gz)
  set(changelog ${PROJECT_BINARY_DIR}/changelog.gz)
endif()
add_custom_target(compressed_docs ALL DEPENDS ${man_page} ${changelog})
install(FILES ${man_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_SOURCE_DIR}/debian/copyright ${changelog} DESTINATION ${CMAKE_INSTALL_DOCDIR})
file(GLOB example_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/*.frm)
install(FILES ${example_files} DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
# bash-completion loads it when `vexa` is first completed, from the prefixes
# /usr/local, /usr and ~/.local.
install(FILES ${PROJECT_SOURCE_DIR}/completion/vexa.bash DESTINATION ${completions_dir} RENAME vexa)

# The folders this install made, beside those an earlier one made, for
# cmake/uninstall.cmake: one path under the prefix a line.
string(CONFIGURE [[
  if("$ENV{DESTDIR}" STREQUAL "")
    set(record "${CMAKE_INSTALL_PREFIX}/@CMAKE_INSTALL_DOCDIR@/made-folders")
    if(EXISTS "${record}")
      file(STRINGS "${record}" earlier)
      list(APPEND vexa_made_folders ${earlier})
    endif()
    list(REMOVE_DUPLICATES vexa_made_folders)
    list(SORT vexa_made_folders)
    list(JOIN vexa_made_folders "\n" lines)
    message(STATUS "Installing: ${record}")
    file(WRITE "${record}" "${lines}\n")
    list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${record}")
  endif()
]] write_record @ONLY)
install(CODE "${write_record}")

# `cpack -G DEB` in the build folder makes vexa_<version>_<arch>.deb. The
# architecture is CPack's own guess or the cross toolchain's, and the
# dependencies come from the binary's shared libraries.
set(VEXA_MAINTAINER "The vexa developers <vexa-developers@users.noreply.invalid>"
    CACHE STRING "The Debian package's Maintainer field")
set(VEXA_HOMEPAGE "" CACHE STRING "The Debian package's Homepage field; none when empty")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${VEXA_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${VEXA_MAINTAINER}")
if(VEXA_HOMEPAGE)
  set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${VEXA_HOMEPAGE}")
endif()
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "calculator for the terminal, with formula files and coding utilities")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "vexa evaluates arithmetic expressions typed at its prompt, given as
arguments or piped in, keeping variables from line to line. It runs formula
files (.frm) that read values, compute and print results, and offers
hexadecimal conversion, MD5, SHA-1 and SHA-256 digests, C-string escaping,
Base64 and URL coding, digit grouping, time text, UUIDs and a SHA-256
hash-chain benchmark.")
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# A cross build's toolchain names the dependencies itself: dpkg-shlibdeps reads
# only the build machine's own libraries.
if(NOT CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Two packages of one tree are the same bytes: without a SOURCE_DATE_EPOCH of
# the caller's, every file's time is the changelog's newest date.
execute_process(COMMAND date -d "${changelog_date}" +%s OUTPUT_VARIABLE CPACK_VEXA_SOURCE_DATE_EPOCH
                OUTPUT_STRIP_TRAILING_WHITESPACE)
# A package is for other machines: say so when it is made from a debug or
# sanitized build rather than the default Release one.
set(CPACK_VEXA_BUILD_TYPE "${CMAKE_BUILD_TYPE}")
set(CPACK_VEXA_SANITIZE "${VEXA_SANITIZE}")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/package.cmake)
include(CPack)
