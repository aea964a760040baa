# The toolchain file of the presets of other machines: Debian's cross compiler for EPS_MACHINE, and
# the libraries and headers that tools/test-cross keeps for it; what is built runs under qemu-user.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES EPS_MACHINE)
set(triplet_arm64 aarch64-linux-gnu)
set(triplet_armhf arm-linux-gnueabihf)
set(triplet_s390x s390x-linux-gnu)
set(processor_arm64 aarch64)
set(processor_armhf arm)
set(processor_s390x s390x)
set(triplet "${triplet_${EPS_MACHINE}}")

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR "${processor_${EPS_MACHINE}}")
set(CMAKE_CXX_COMPILER "${triplet}-g++")
set(CMAKE_LIBRARY_ARCHITECTURE "${triplet}")

set(CMAKE_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/cross/${EPS_MACHINE}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${CMAKE_SYSROOT}/usr/lib/${triplet}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")

set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-${processor_${EPS_MACHINE}}" -L "${CMAKE_SYSROOT}")
