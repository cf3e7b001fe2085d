# 32-bit x86 Linux with Debian's cross compiler (g++-i686-linux-gnu), for Debian's
# i386 baseline: i686 without SSE, so doubles are computed on the x87 unit. CTest
# runs the target's programs under qemu-user, which finds the target's shared
# libraries in the cross compiler's sysroot.
#   cmake -S . -B build-i686 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-i686.cmake
set(VEXA_CROSS_TRIPLE i686-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(VEXA_DEB_ARCHITECTURE i386)
set(VEXA_QEMU_MACHINE i386)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-debian-cross.cmake)
