# Looks for HEADERS in the directories that the file DIRECTORIES lists. For each of them, writes a header that includes
# it into the folder FORWARD; without FORWARD, installs them into DESTINATION.
file(READ "${DIRECTORIES}" directories)
foreach(header IN LISTS HEADERS)
  unset(found CACHE)
  find_file(found ${header} PATHS ${directories} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
  if(NOT found AND header STREQUAL PlatformExport.h)
    continue() # It only marks exported classes. A device's headers need not have it.
  elseif(NOT found)
    message(FATAL_ERROR "The platform's include directories (${directories}) have no ${header}")
  elseif(FORWARD)
    file(CONFIGURE OUTPUT "${FORWARD}/${header}" CONTENT "#include \"${found}\"\n" @ONLY)
  else()
    file(INSTALL "${found}" DESTINATION "${DESTINATION}")
  endif()
endforeach()
