# Read by cpack before it makes a package: dependencies are those of the packages' architecture.
if(CPACK_DEBIAN_PACKAGE_ARCHITECTURE)
  set(ENV{DEB_HOST_ARCH} "${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}")
endif()
