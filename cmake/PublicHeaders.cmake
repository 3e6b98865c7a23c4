# Generates the public headers that are not in include/: the one that checks which std::string a program uses, and one
# for each header of the chosen platform, in callrecordingutils/platform/, so that a header of the same name earlier on
# a program's include path is not taken for it. Defines the target callrecordingutils_headers.
include(CheckCXXSourceCompiles)

set(generated_headers "${PROJECT_BINARY_DIR}/include/callrecordingutils")
set(new_layout "defined(__GLIBCXX__) && _GLIBCXX_USE_CXX11_ABI")
set(old_layout "defined(__GLIBCXX__) && !_GLIBCXX_USE_CXX11_ABI")
foreach(layout new_layout old_layout)
  check_cxx_source_compiles("#include <string>\n#if !(${${layout}})\n#error\n#endif\nint main() {}"
    CALLRECORDINGUTILS_HAS_${layout})
endforeach()
if(CALLRECORDINGUTILS_HAS_new_layout)
  set(string_layout "libstdc++ and _GLIBCXX_USE_CXX11_ABI=1")
  set(other_string_layout "!(${new_layout})")
elseif(CALLRECORDINGUTILS_HAS_old_layout)
  set(string_layout "libstdc++ and _GLIBCXX_USE_CXX11_ABI=0")
  set(other_string_layout "!(${old_layout})")
else()
  set(string_layout "another standard library than libstdc++")
  set(other_string_layout "defined(__GLIBCXX__)")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/StringLayout.h.in" "${generated_headers}/StringLayout.h" @ONLY)

# The platform's include directories may come from targets that it links, or be generator expressions. They are known
# only when the build files are written, so the build itself looks for the headers.
set(platform_headers CallParams.h LogStream.h MultiSectionFile.h ThreadMutex.h)
set(platform_dirs "${PROJECT_BINARY_DIR}/platform-directories.txt")
file(GENERATE OUTPUT "${platform_dirs}"
  CONTENT "$<TARGET_PROPERTY:callrecordingutils_platform,INTERFACE_INCLUDE_DIRECTORIES>")
set(forwarding ${platform_headers})
list(TRANSFORM forwarding PREPEND "${generated_headers}/platform/")
set(platform_headers_script "${CMAKE_CURRENT_LIST_DIR}/PlatformHeaders.cmake")
add_custom_command(OUTPUT ${forwarding} VERBATIM
  COMMAND "${CMAKE_COMMAND}" "-DDIRECTORIES=${platform_dirs}" "-DHEADERS=${platform_headers}"
    "-DFORWARD=${generated_headers}/platform" -P "${platform_headers_script}"
  DEPENDS "${platform_dirs}" "${platform_headers_script}")
add_custom_target(callrecordingutils_platform_headers DEPENDS ${forwarding})

add_library(callrecordingutils_headers INTERFACE)
add_dependencies(callrecordingutils_headers callrecordingutils_platform_headers)
target_include_directories(callrecordingutils_headers INTERFACE
  "${PROJECT_SOURCE_DIR}/include"
  "${PROJECT_BINARY_DIR}/include"
  $<TARGET_PROPERTY:callrecordingutils_platform,INTERFACE_INCLUDE_DIRECTORIES>)
