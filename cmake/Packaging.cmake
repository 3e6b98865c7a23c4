# The Debian packages that `cpack -G DEB` makes of a build, one for each component: scripts/package.sh.
# They are made of builds for /usr only, where the library lies where Debian looks for it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "callrecordingutils maintainers <maintainers@callrecordingutils.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET callrecordingctl)
  list(APPEND CPACK_COMPONENTS_ALL client)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Decides in a telephony process whether a call is recorded,\nand edits the rules for it.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libcallrecordingutils1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_MULTIARCH same)

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Headers, CMake package, pkg-config file, documents and examples\nof libcallrecordingutils1.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libcallrecordingutils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)

set(CPACK_COMPONENT_CLIENT_DESCRIPTION
  "callrecordingctl, which shows, checks and edits the call-recording\nrules from a shell.")
set(CPACK_COMPONENT_CLIENT_DEPENDS runtime)
set(CPACK_DEBIAN_CLIENT_PACKAGE_NAME callrecordingctl)
set(CPACK_DEBIAN_CLIENT_PACKAGE_SECTION comm)
# Where the library lies that the client's dependencies are computed with.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")

# The packages carry the architecture that the compiler builds for, whatever this machine's is.
find_program(DPKG_ARCHITECTURE dpkg-architecture)
if(DPKG_ARCHITECTURE AND CMAKE_LIBRARY_ARCHITECTURE)
  execute_process(OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND "${DPKG_ARCHITECTURE}" -f -t "${CMAKE_LIBRARY_ARCHITECTURE}" -q DEB_HOST_ARCH)
endif()
if(CMAKE_CROSSCOMPILING)
  set(CPACK_CROSS_ROOT "${CMAKE_FIND_ROOT_PATH}")
endif()
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_LIST_DIR}/PackageArchitecture.cmake")

# An installation under /usr is the system's, and has what Debian asks for: the directory of the rules, a
# changelog for each package, pages and changelogs compressed, and what other packages are to depend on.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  install(DIRECTORY DESTINATION /etc/quva-conf/telephony COMPONENT runtime)
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    install(FILES "${PROJECT_SOURCE_DIR}/packaging/debian/changelog" COMPONENT ${component}
      DESTINATION "share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
    install(CODE "
      file(GLOB texts \"\$ENV{DESTDIR}/usr/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}/changelog\"
        \"\$ENV{DESTDIR}/usr/share/man/man?/callrecording*.?\")
      foreach(text IN LISTS texts)
        execute_process(COMMAND gzip -9nf \"\${text}\")
      endforeach()" COMPONENT ${component})
  endforeach()

  set(control "${PROJECT_BINARY_DIR}/debian")
  file(WRITE "${control}/shlibs"
    "libcallrecordingutils 1 libcallrecordingutils1 (>= ${PROJECT_VERSION})\n")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    "${control}/shlibs;${PROJECT_SOURCE_DIR}/packaging/debian/triggers")
  find_program(DPKG_GENSYMBOLS dpkg-gensymbols)
  if(DPKG_GENSYMBOLS AND TARGET callrecordingutils AND NOT is_static)
    list(APPEND CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${control}/symbols")
    add_custom_command(OUTPUT "${control}/symbols" VERBATIM
      COMMAND "${CMAKE_COMMAND}" -E rm -f "${control}/symbols"
      COMMAND "${CMAKE_COMMAND}" -E env "DEB_HOST_ARCH=${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}"
        "${DPKG_GENSYMBOLS}" -plibcallrecordingutils1 -v${PROJECT_VERSION}
        "-e$<TARGET_FILE:callrecordingutils>" "-O${control}/symbols"
      COMMAND sed -i "1a* Build-Depends-Package: libcallrecordingutils-dev" "${control}/symbols"
      DEPENDS callrecordingutils)
    add_custom_target(callrecordingutils_debian_symbols ALL DEPENDS "${control}/symbols")
  endif()
endif()

include(CPack)
