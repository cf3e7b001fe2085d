# What the Debian cross toolchains share; the toolchain-<machine>.cmake files set
# VEXA_CROSS_TRIPLE, CMAKE_SYSTEM_PROCESSOR and VEXA_DEB_ARCHITECTURE first, and
# VEXA_QEMU_MACHINE where qemu's name is not the triple's first word.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${VEXA_CROSS_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${VEXA_CROSS_TRIPLE}-g++)

# Debian installs the target's headers and libraries here; the compilers know the
# place themselves, and CMake's searches for libraries and packages stay inside it,
# so nothing of the build machine's own architecture is linked in.
set(VEXA_CROSS_SYSROOT /usr/${VEXA_CROSS_TRIPLE})
set(CMAKE_FIND_ROOT_PATH ${VEXA_CROSS_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

if(NOT VEXA_QEMU_MACHINE)
  string(REGEX REPLACE "-.*" "" VEXA_QEMU_MACHINE ${VEXA_CROSS_TRIPLE})
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${VEXA_QEMU_MACHINE} -L ${VEXA_CROSS_SYSROOT})

# A Debian package for the target: dpkg-shlibdeps cannot read the target's
# libraries from the build machine's package database, so the dependencies are
# given as the cross-built program needs them (C and C++ runtime).
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${VEXA_DEB_ARCHITECTURE})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 11)")
