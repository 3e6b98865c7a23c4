# The rooms of src/, from the ground up. A room is a folder; it sees the headers of the rooms that it
# names, which come before it here, and of nothing else of the project. tests/rooms_test.py reads this
# file and checks every include against it.

# callrecordingutils_room(FOLDER [USES ROOM...] [LIBRARIES LIBRARY...]): the sources of FOLDER as the object
# library callrecordingutils_FOLDER, with "_" for "/". Its include directory holds one entry, a link to
# the folder. Every room may use common, which is headers only.
function(callrecordingutils_room folder)
  cmake_parse_arguments(ROOM "" "" "USES;LIBRARIES" ${ARGN})
  string(REPLACE "/" "_" name "${folder}")
  set(view "${CMAKE_CURRENT_BINARY_DIR}/rooms/${name}")
  get_filename_component(parent "${view}/${folder}" DIRECTORY)
  file(MAKE_DIRECTORY "${parent}")
  file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/${folder}" "${view}/${folder}" SYMBOLIC)
  string(REPLACE "/" "_" uses "${ROOM_USES}")
  list(TRANSFORM uses PREPEND callrecordingutils_)
  file(GLOB sources CONFIGURE_DEPENDS "${folder}/*.cpp")
  add_library(callrecordingutils_${name} OBJECT EXCLUDE_FROM_ALL ${sources})
  target_compile_options(callrecordingutils_${name} PRIVATE -ffunction-sections -fdata-sections)
  target_include_directories(callrecordingutils_${name} PUBLIC "${view}")
  target_link_libraries(callrecordingutils_${name}
    PUBLIC callrecordingutils_headers callrecordingutils_common ${uses} ${ROOM_LIBRARIES})
endfunction()

add_library(callrecordingutils_common INTERFACE)
file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/rooms/common")
file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/common"
  "${CMAKE_CURRENT_BINARY_DIR}/rooms/common/common" SYMBOLIC)
target_include_directories(callrecordingutils_common INTERFACE
  "${CMAKE_CURRENT_BINARY_DIR}/rooms/common")

# The core: what the shared library is made of. Pure: no singleton, environment, lock or log.
callrecordingutils_room(model)
callrecordingutils_room(language)
callrecordingutils_room(matching USES model language)
callrecordingutils_room(validation USES model language matching)
callrecordingutils_room(calls USES model language matching validation)
callrecordingutils_room(database USES model)
callrecordingutils_room(loading USES model database calls)
set(core_rooms
  callrecordingutils_model
  callrecordingutils_language
  callrecordingutils_matching
  callrecordingutils_validation
  callrecordingutils_calls
  callrecordingutils_database
  callrecordingutils_loading)
# On 32-bit systems a file may have any inode and time. Only here: a device's headers may have types that
# change with these.
set_property(SOURCE database/RuleFileLock.cpp loading/LoadedRules.cpp
  PROPERTY COMPILE_DEFINITIONS _FILE_OFFSET_BITS=64 _TIME_BITS=64)

# What a set of rules does, exactly. It takes its time and its memory, for whoever asks questions about
# rules, and so is not part of the shared library.
callrecordingutils_room(analysis USES model language matching calls)

add_library(callrecordingutils_core STATIC EXCLUDE_FROM_ALL)
target_link_libraries(callrecordingutils_core
  PUBLIC ${core_rooms} callrecordingutils_analysis callrecordingutils_platform)

if(NOT CALLRECORDINGUTILS_BUILD_CLIENT)
  return()
endif()

find_package(fmt REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(Threads REQUIRED)
find_package(ZLIB REQUIRED)
find_library(CSV_LIBRARY csv REQUIRED)
find_library(LZMA_LIBRARY lzma REQUIRED)
find_library(MD_LIBRARY md REQUIRED)
find_library(UNISTRING_LIBRARY unistring REQUIRED)
find_library(ZSTD_LIBRARY zstd REQUIRED)

# What people and services do with rule files and call records: on the platform of the host, and never
# part of the shared library.
callrecordingutils_room(text
  LIBRARIES fmt::fmt ZLIB::ZLIB ${CSV_LIBRARY} ${LZMA_LIBRARY} ${UNISTRING_LIBRARY} ${ZSTD_LIBRARY})
callrecordingutils_room(json USES model validation calls text LIBRARIES nlohmann_json::nlohmann_json)
callrecordingutils_room(administration/inspection USES model database LIBRARIES fmt::fmt ${MD_LIBRARY})
callrecordingutils_room(administration/check
  USES model database validation calls analysis text administration/inspection LIBRARIES fmt::fmt)
callrecordingutils_room(administration/selection
  USES model validation calls LIBRARIES fmt::fmt)
callrecordingutils_room(administration/edit
  USES model database validation text administration/inspection LIBRARIES fmt::fmt)
callrecordingutils_room(administration/history
  USES administration/inspection LIBRARIES fmt::fmt SQLite::SQLite3 ZLIB::ZLIB)
callrecordingutils_room(administration/pull
  USES administration/inspection administration/history LIBRARIES fmt::fmt)
callrecordingutils_room(administration/exchange
  USES model validation text json administration/inspection administration/edit LIBRARIES fmt::fmt)
callrecordingutils_room(administration/services
  LIBRARIES nlohmann_json::nlohmann_json Threads::Threads)
add_library(callrecordingutils_administration STATIC EXCLUDE_FROM_ALL)
target_link_libraries(callrecordingutils_administration
  PUBLIC callrecordingutils_core callrecordingutils_text callrecordingutils_json
    callrecordingutils_administration_inspection callrecordingutils_administration_check
    callrecordingutils_administration_selection callrecordingutils_administration_edit
    callrecordingutils_administration_history callrecordingutils_administration_pull
    callrecordingutils_administration_exchange callrecordingutils_administration_services)

callrecordingutils_room(records/reading USES model text LIBRARIES fmt::fmt nlohmann_json::nlohmann_json)
callrecordingutils_room(records/counting USES model calls text records/reading
  LIBRARIES fmt::fmt nlohmann_json::nlohmann_json Threads::Threads)
callrecordingutils_room(records/report
  USES model calls text json records/reading records/counting LIBRARIES fmt::fmt nlohmann_json::nlohmann_json)
callrecordingutils_room(records/page
  USES model records/counting records/report LIBRARIES fmt::fmt ${UNISTRING_LIBRARY})
add_library(callrecordingutils_records STATIC EXCLUDE_FROM_ALL)
target_link_libraries(callrecordingutils_records
  PUBLIC callrecordingutils_administration callrecordingutils_records_reading
    callrecordingutils_records_counting callrecordingutils_records_report
    callrecordingutils_records_page)
