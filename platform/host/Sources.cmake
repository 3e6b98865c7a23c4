# The sources of this folder that need nothing but each other.
set(host_sources
  AtomicFile.cpp
  LogStream.cpp
  MultiSectionFile.cpp
  QuietWrite.cpp
  SectionedText.cpp
  StringUtils.cpp
  Temporary.cpp
  ThreadMutex.cpp)
list(TRANSFORM host_sources PREPEND "${CMAKE_CURRENT_LIST_DIR}/")
