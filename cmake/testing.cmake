# GoogleTest and the command the black-box scripts start vexa with, for native and
# cross builds alike. Included from tests/CMakeLists.txt.

# A cross build needs GoogleTest compiled for the target machine: Debian's
# libgtest-dev ships its sources, built here with the tests. A native build uses
# the installed library and falls back to the same sources if there is none.
set(VEXA_GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest sources, used where no GoogleTest for the target is installed")
if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest QUIET)
endif()
if(NOT GTest_FOUND)
  if(NOT EXISTS ${VEXA_GTEST_SOURCE}/CMakeLists.txt)
    message(FATAL_ERROR "No GoogleTest for the target: install libgtest-dev (its sources are in /usr/src/googletest) or set VEXA_GTEST_SOURCE")
  endif()
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(${VEXA_GTEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()

# The scripts take the program to run as their argument. On another machine that
# is a shell script in the build folder that starts vexa under the emulator, so
# the scripts run unchanged.
if(CMAKE_CROSSCOMPILING AND CMAKE_CROSSCOMPILING_EMULATOR)
  list(JOIN CMAKE_CROSSCOMPILING_EMULATOR "' '" emulator)
  set(VEXA_COMMAND ${CMAKE_BINARY_DIR}/vexa-emulated)
  file(GENERATE OUTPUT ${VEXA_COMMAND}
       CONTENT "#!/bin/sh\nexec '${emulator}' '$<TARGET_FILE:vexa>' \"$@\"\n"
       FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
else()
  set(VEXA_COMMAND $<TARGET_FILE:vexa>)
endif()
