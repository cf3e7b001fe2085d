# Removes what `cmake --install` puts under a prefix, by installing the build
# once more into a scratch folder to learn the files' names:
#   cmake [-DPREFIX=/usr/local] [-DBUILD=build] -P cmake/uninstall.cmake
# run in the source folder. Folders go too when nothing is left in them: vexa's
# own (share/doc/vexa) and those that an install made, which it listed in
# share/doc/vexa/made-folders; a folder an install found, such as bin, stays.
if(NOT DEFINED PREFIX)
  set(PREFIX /usr/local)
endif()
if(NOT DEFINED BUILD)
  set(BUILD build)
endif()
if(NOT EXISTS "${BUILD}/cmake_install.cmake")
  message(FATAL_ERROR "No build of vexa in '${BUILD}' to learn the installed files from: build "
                      "vexa there first, or name the build folder with -DBUILD=folder")
endif()

# A new folder outside the build, so that an uninstall run with sudo leaves
# nothing of root's there.
execute_process(COMMAND mktemp -d OUTPUT_VARIABLE stage OUTPUT_STRIP_TRAILING_WHITESPACE
                RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "Cannot make a scratch folder with mktemp -d")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${stage}"
                OUTPUT_QUIET ERROR_VARIABLE error RESULT_VARIABLE failed)
if(failed)
  file(REMOVE_RECURSE "${stage}")
  message(FATAL_ERROR "Installing the build in '${BUILD}' into a scratch folder, to learn the "
                      "installed files, failed:\n${error}")
endif()

file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE "${stage}" "${stage}/*")
file(REMOVE_RECURSE "${stage}")
set(folders "")
foreach(file ${files})
  if(file MATCHES "(^|/)made-folders$" AND EXISTS "${PREFIX}/${file}")
    file(STRINGS "${PREFIX}/${file}" made)
    foreach(folder ${made})  # only folders below the prefix
      if(NOT folder MATCHES "^/|(^|/)\\.\\.(/|$)")
        list(APPEND folders "${folder}")
      endif()
    endforeach()
  endif()
  get_filename_component(folder "${file}" DIRECTORY)
  if(folder MATCHES "(^|/)vexa(/|$)")
    list(APPEND folders "${folder}")
  endif()
endforeach()
foreach(file ${files})
  if(EXISTS "${PREFIX}/${file}" OR IS_SYMLINK "${PREFIX}/${file}")
    message(STATUS "Removing ${PREFIX}/${file}")
    file(REMOVE "${PREFIX}/${file}")
  endif()
endforeach()

# Deepest first, so that a folder emptied by its subfolder's removal goes too;
# rmdir removes only an empty folder.
list(REMOVE_DUPLICATES folders)
list(SORT folders ORDER DESCENDING)
foreach(folder ${folders})
  if(IS_DIRECTORY "${PREFIX}/${folder}" AND NOT IS_SYMLINK "${PREFIX}/${folder}")
    execute_process(COMMAND rmdir -- "${PREFIX}/${folder}" RESULT_VARIABLE kept ERROR_QUIET)
    if(NOT kept)
      message(STATUS "Removing ${PREFIX}/${folder}/")
    endif()
  endif()
endforeach()
