# 32-bit ARM Linux with hardware floating point and Debian's cross compiler
# (g++-arm-linux-gnueabihf). CTest runs the target's programs under qemu-user,
# which finds the target's shared libraries in the cross compiler's sysroot.
#   cmake -S . -B build-armhf -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-armhf.cmake
set(VEXA_CROSS_TRIPLE arm-linux-gnueabihf)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(VEXA_DEB_ARCHITECTURE armhf)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-debian-cross.cmake)
