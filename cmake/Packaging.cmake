# The Debian packages that `cpack -G DEB` makes of a build, one for each component. Configure with
# -DCMAKE_INSTALL_PREFIX=/usr, which puts the library where Debian looks for it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "callrecordingutils maintainers <maintainers@callrecordingutils.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/CompressManPages.cmake")
set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET callrecordingctl)
  list(APPEND CPACK_COMPONENTS_ALL client)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# What the packages of other programs that link the library are to depend on.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Decides in a telephony process whether a call is recorded, and edits the rules for it.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libcallrecordingutils1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Headers, CMake package and pkg-config file of libcallrecordingutils1.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libcallrecordingutils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)

set(CPACK_COMPONENT_CLIENT_DESCRIPTION
  "callrecordingctl, which shows, checks and edits the call-recording rules from a shell.")
set(CPACK_DEBIAN_CLIENT_PACKAGE_NAME callrecordingctl)
set(CPACK_DEBIAN_CLIENT_PACKAGE_SECTION comm)

include(CPack)
