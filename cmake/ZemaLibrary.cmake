# How every target of the project is built: one language level, the same warnings, one way to name a room.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# What belongs to the program alone. A build has the layout of an installation, so that its run paths are final: paths that
# are rewritten on the way are padded with empty entries, which stand for the current folder.
set(ZEMA_PRIVATE_FOLDER "${PROJECT_BINARY_DIR}/lib/wqf")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

option(ZEMA_WERROR "Let a warning end the build" ON)
set(ZEMA_SANITIZE "" CACHE STRING "Sanitizers to build with, separated by commas: address,undefined or thread")

add_library(zema_options INTERFACE)
add_library(ZEMA::options ALIAS zema_options)
target_compile_options(zema_options INTERFACE
  -Wall -Wextra -Wpedantic $<$<BOOL:${ZEMA_WERROR}>:-Werror> -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-align -Wformat=2 -Wundef)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # When it optimises, g++ 12 sees overlaps in its own library's "literal" + std::string that are not there.
  target_compile_options(zema_options INTERFACE -Wno-restrict)
endif()
target_include_directories(zema_options INTERFACE "${PROJECT_SOURCE_DIR}")
if(ZEMA_SANITIZE)
  target_compile_options(zema_options INTERFACE
    -fsanitize=${ZEMA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(zema_options INTERFACE -fsanitize=${ZEMA_SANITIZE})
endif()
if(ZEMA_FUZZ)
  target_compile_options(zema_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# zema_library(storage_zip SOURCES a.cpp ... USES ZEMA::storage ... HIDES ZLIB::ZLIB ...)
# USES: what our headers show; HIDES: what only our sources touch.
function(zema_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES;HIDES" ${ARGN})
  add_library(zema_${name} STATIC ${ARG_SOURCES})
  add_library(ZEMA::${name} ALIAS zema_${name})
  target_link_libraries(zema_${name} PUBLIC ${ARG_USES} PRIVATE ZEMA::options ${ARG_HIDES})
endfunction()

# zema_test(core SOURCES StringTest.cpp ... USES ZEMA::core ...): one GoogleTest program a room, one CTest entry a case.
include(GoogleTest)

function(zema_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  find_package(GTest REQUIRED)
  add_executable(${name}_test ${ARG_SOURCES})
  target_link_libraries(${name}_test PRIVATE ${ARG_USES} ZEMA::options GTest::gtest GTest::gtest_main)
  target_precompile_headers(${name}_test REUSE_FROM zema_test_headers)
  gtest_discover_tests(${name}_test DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
