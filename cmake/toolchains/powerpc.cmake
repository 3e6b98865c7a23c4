# PowerPC, 32 bits, big-endian; char is unsigned.
set(CMAKE_SYSTEM_PROCESSOR ppc)
set(triplet powerpc-linux-gnu)
set(multiarch powerpc-linux-gnu)
set(qemu ppc)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
