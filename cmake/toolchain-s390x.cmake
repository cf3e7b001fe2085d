# 64-bit IBM Z Linux, a big-endian machine, with Debian's cross compiler
# (g++-s390x-linux-gnu). CTest runs the target's programs under qemu-user, which
# finds the target's shared libraries in the cross compiler's sysroot.
#   cmake -S . -B build-s390x -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-s390x.cmake
set(VEXA_CROSS_TRIPLE s390x-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(VEXA_DEB_ARCHITECTURE s390x)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-debian-cross.cmake)
