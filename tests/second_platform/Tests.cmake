# The tests for any platform fail on each of this one's faults. And what happens where the buffer cannot be
# used, which no other platform shows.
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/Faults.h" faults REGEX "^/// - ")
list(TRANSFORM faults REPLACE "^/// - " "")
foreach(fault IN LISTS faults)
  add_test(NAME "fault: ${fault}" COMMAND platform_contract_tests)
  set_tests_properties("fault: ${fault}" PROPERTIES
    WILL_FAIL ON TIMEOUT 60 ENVIRONMENT "PLATFORM_FAULT=${fault}")
endforeach()

callrecordingutils_test(NAME unusable_buffer_tests ANY_PLATFORM
  SOURCES unusable_buffer_test.cpp LIBRARIES callrecordingutils)
