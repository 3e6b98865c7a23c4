# x86, 32 bits.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(triplet i686-linux-gnu)
set(multiarch i386-linux-gnu)
set(qemu i386)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
# An x86-64 processor runs the tests itself, with the loader of the sysroot. (Under the emulator, programs with threads
# would hang.)
if(CMAKE_HOST_SYSTEM_PROCESSOR STREQUAL x86_64)
  set(CMAKE_CROSSCOMPILING_EMULATOR "/usr/${triplet}/lib/ld-linux.so.2;--library-path;/usr/${triplet}/lib")
endif()
