# 64-bit ARM Linux with Debian's cross compiler (g++-aarch64-linux-gnu). CTest runs
# the target's programs under qemu-user, which finds the target's
# shared libraries in the cross compiler's sysroot.
#   cmake -S . -B build-aarch64 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-aarch64.cmake
set(VEXA_CROSS_TRIPLE aarch64-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(VEXA_DEB_ARCHITECTURE arm64)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-debian-cross.cmake)
