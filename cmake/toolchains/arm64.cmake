# ARM, 64 bits; char is unsigned.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(triplet aarch64-linux-gnu)
set(multiarch aarch64-linux-gnu)
set(qemu aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
