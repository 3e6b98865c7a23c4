# ARM, 32 bits, soft float; char is unsigned.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(triplet arm-linux-gnueabi)
set(multiarch arm-linux-gnueabi)
set(qemu arm)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
