# ARM, 32 bits, hard float; char is unsigned.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(triplet arm-linux-gnueabihf)
set(multiarch arm-linux-gnueabihf)
set(qemu arm)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
