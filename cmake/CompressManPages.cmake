# Run by cpack on the files of the packages: Debian keeps man pages compressed.
file(GLOB_RECURSE pages "${CPACK_TEMPORARY_DIRECTORY}/client/*.1")
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9n "${page}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
