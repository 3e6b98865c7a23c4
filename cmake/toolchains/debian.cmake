# A cross build with Debian's compilers. The toolchain file of an architecture sets the name that Debian
# gives its tools, and reads this one; the compiler brings its own sysroot, /usr/NAME.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_LIBRARY_ARCHITECTURE ${multiarch})
set(CMAKE_FIND_ROOT_PATH /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Tests run under the emulator, where it is installed; without one the build still configures.
find_program(CALLRECORDINGUTILS_QEMU qemu-${qemu})
if(CALLRECORDINGUTILS_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${CALLRECORDINGUTILS_QEMU};-L;/usr/${triplet}")
endif()
