# MIPS, 32 bits, little-endian.
set(CMAKE_SYSTEM_PROCESSOR mipsel)
set(triplet mipsel-linux-gnu)
set(multiarch mipsel-linux-gnu)
set(qemu mipsel)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
