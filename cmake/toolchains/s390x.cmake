# z/Architecture, 64 bits, big-endian; char is unsigned.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(triplet s390x-linux-gnu)
set(multiarch s390x-linux-gnu)
set(qemu s390x)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
