# Cross build for the device: 32-bit big-endian MIPS (o32 ABI), Linux, glibc.
#
# Uses Debian's g++-mips-linux-gnu cross compiler and the MIPS sysroot it installs under
# /usr/mips-linux-gnu.  Programs built with it (tests, the voice-module emulator) run on the
# build machine through qemu-user: CTest and GoogleTest's test discovery start them through
# CMAKE_CROSSCOMPILING_EMULATOR, with the sysroot as the dynamic loader's root.
#
# Integrators with their own toolchain keep their own file; what this project needs from one
# is listed in README.md ("Building for the device").
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR mips)

set(TR104_CROSS_TRIPLE mips-linux-gnu)
set(TR104_CROSS_SYSROOT /usr/${TR104_CROSS_TRIPLE} CACHE PATH "Target's root (libraries and dynamic loader)")

set(CMAKE_C_COMPILER ${TR104_CROSS_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${TR104_CROSS_TRIPLE}-g++)
# The binutils of the same triple; the export check reads the library with CMAKE_NM.
find_program(CMAKE_AR ${TR104_CROSS_TRIPLE}-ar REQUIRED)
find_program(CMAKE_RANLIB ${TR104_CROSS_TRIPLE}-ranlib REQUIRED)
find_program(CMAKE_NM ${TR104_CROSS_TRIPLE}-nm REQUIRED)
find_program(CMAKE_STRIP ${TR104_CROSS_TRIPLE}-strip REQUIRED)
find_program(CMAKE_OBJDUMP ${TR104_CROSS_TRIPLE}-objdump)

# Libraries and packages come from the target's root (and from prefixes the build adds to
# CMAKE_FIND_ROOT_PATH, such as the cross-built GoogleTest); programs from the build machine.
list(APPEND CMAKE_FIND_ROOT_PATH ${TR104_CROSS_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(TR104_QEMU qemu-mips)
if(TR104_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${TR104_QEMU} -L ${TR104_CROSS_SYSROOT})
endif()
