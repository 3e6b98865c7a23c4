# Read by cpack before it makes a package: dependencies are those of the packages' architecture.
if(CPACK_DEBIAN_PACKAGE_ARCHITECTURE)
  set(ENV{DEB_HOST_ARCH} "${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}")
endif()
if(CPACK_CROSS_ROOT)
  set(ENV{CROSS_ROOT} "${CPACK_CROSS_ROOT}")
  set(SHLIBDEPS_EXECUTABLE "${CMAKE_CURRENT_LIST_DIR}/cross-shlibdeps")
endif()
