# What `cmake --install` puts where. The components are: runtime (the library), development (what it
# takes to build against it) and client (callrecordingctl, whose own folder installs it).
include(CMakePackageConfigHelpers)

set(headers_dir "${CMAKE_INSTALL_INCLUDEDIR}/callrecordingutils")
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/callrecordingutils")

install(TARGETS callrecordingutils EXPORT callrecordingutilsTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)

install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/callrecordingutils/" DESTINATION "${headers_dir}"
  COMPONENT development FILES_MATCHING PATTERN "*.h")
install(FILES "${PROJECT_BINARY_DIR}/include/callrecordingutils/StringLayout.h"
  DESTINATION "${headers_dir}" COMPONENT development)
# The chosen platform's headers that the public ones include, as the library was compiled with them.
install(CODE "
  set(DIRECTORIES \"${platform_dirs}\")
  set(HEADERS \"${platform_headers};PlatformExport.h\")
  set(DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${headers_dir}/platform\")" COMPONENT development)
install(SCRIPT "${platform_headers_script}" COMPONENT development)

set(is_static OFF)
get_target_property(library_type callrecordingutils TYPE)
if(library_type STREQUAL STATIC_LIBRARY)
  set(is_static ON)
endif()
install(EXPORT callrecordingutilsTargets NAMESPACE callrecordingutils::
  DESTINATION "${package_dir}" COMPONENT development)
configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/callrecordingutilsConfig.cmake.in" callrecordingutilsConfig.cmake
  INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file(callrecordingutilsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)

install(FILES
  "${CMAKE_CURRENT_BINARY_DIR}/callrecordingutilsConfig.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/callrecordingutilsConfigVersion.cmake"
  DESTINATION "${package_dir}" COMPONENT development)

# The prefix is known when it is installed: `cmake --install DIR --prefix PREFIX` may choose another one.
set(install_prefix "@CMAKE_INSTALL_PREFIX@")
configure_file("${CMAKE_CURRENT_LIST_DIR}/callrecordingutils.pc.in" callrecordingutils.pc.in @ONLY)
install(CODE "
  configure_file(\"${CMAKE_CURRENT_BINARY_DIR}/callrecordingutils.pc.in\"
    \"${CMAKE_CURRENT_BINARY_DIR}/callrecordingutils.pc\" @ONLY)
  file(INSTALL \"${CMAKE_CURRENT_BINARY_DIR}/callrecordingutils.pc\"
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig\")"
  COMPONENT development)

# Documents and examples.
if(is_top_level)
  set(documents "share/doc/libcallrecordingutils-dev")
  install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
    DESTINATION "${documents}" COMPONENT development)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION "${documents}" COMPONENT development
    FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png")
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" DESTINATION "${documents}" COMPONENT development
    PATTERN CMakeLists.txt EXCLUDE)
endif()
