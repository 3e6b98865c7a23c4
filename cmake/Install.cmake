# Where `cmake --install` puts the library and what a program needs to be built against it. (The client's own folder
# installs the client.)
include(CMakePackageConfigHelpers)

set(headers_dir "${CMAKE_INSTALL_INCLUDEDIR}/callrecordingutils")
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/callrecordingutils")

install(TARGETS callrecordingutils EXPORT callrecordingutilsTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")

install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/callrecordingutils/" DESTINATION "${headers_dir}"
  FILES_MATCHING PATTERN "*.h")
install(FILES "${PROJECT_BINARY_DIR}/include/callrecordingutils/StringLayout.h"
  DESTINATION "${headers_dir}")
# The headers of the platform that the library was compiled with, because the public ones include them.
install(CODE "
  set(DIRECTORIES \"${platform_dirs}\")
  set(HEADERS \"${platform_headers};PlatformExport.h\")
  set(DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${headers_dir}/platform\")")
install(SCRIPT "${platform_headers_script}")

set(is_static OFF)
get_target_property(library_type callrecordingutils TYPE)
if(library_type STREQUAL STATIC_LIBRARY)
  set(is_static ON)
endif()
install(EXPORT callrecordingutilsTargets NAMESPACE callrecordingutils::
  DESTINATION "${package_dir}")
configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/callrecordingutilsConfig.cmake.in" callrecordingutilsConfig.cmake
  INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file(callrecordingutilsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)

install(FILES
  "${CMAKE_CURRENT_BINARY_DIR}/callrecordingutilsConfig.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/callrecordingutilsConfigVersion.cmake"
  DESTINATION "${package_dir}")

# The prefix is known only when it is installed: `cmake --install DIR --prefix PREFIX` may choose another one.
set(install_prefix "@CMAKE_INSTALL_PREFIX@")
configure_file("${CMAKE_CURRENT_LIST_DIR}/callrecordingutils.pc.in" callrecordingutils.pc.in @ONLY)
install(CODE "
  configure_file(\"${CMAKE_CURRENT_BINARY_DIR}/callrecordingutils.pc.in\"
    \"${CMAKE_CURRENT_BINARY_DIR}/callrecordingutils.pc\" @ONLY)
  file(INSTALL \"${CMAKE_CURRENT_BINARY_DIR}/callrecordingutils.pc\"
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig\")")
