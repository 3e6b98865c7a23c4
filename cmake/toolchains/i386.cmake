# x86, 32 bits.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(triplet i686-linux-gnu)
set(multiarch i386-linux-gnu)
set(qemu i386)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
