# MIPS, 32 bits, big-endian.
set(CMAKE_SYSTEM_PROCESSOR mips)
set(triplet mips-linux-gnu)
set(multiarch mips-linux-gnu)
set(qemu mips)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
