# All targets have the same warnings. CMAKE_COMPILE_WARNING_AS_ERROR makes them errors: the presets
# set it, and without it a compiler that has more of them still builds the program.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # GCC 12 has false positives for "literal" + std::string (GCC bug 105651).
  add_compile_options(-Wno-restrict)
endif()

if(ORVANE_SANITIZE)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    message(FATAL_ERROR "ORVANE_SANITIZE needs clang: cmake --preset asan")
  endif()
  add_compile_options(-O1 -g1 -fno-omit-frame-pointer -fno-sanitize-recover=all
                      -fsanitize=address,undefined)
  add_link_options(-fsanitize=address,undefined)
  add_compile_definitions(__SANITIZE_ADDRESS__)  # GCC defines it by itself
  # The libraries are instrumented for the fuzzers too, which share them with the tests.
  set(fuzzOptions -fsanitize=fuzzer-no-link)
endif()

if(ORVANE_TSAN)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    message(FATAL_ERROR "ORVANE_TSAN needs clang: cmake --preset tsan")
  endif()
  add_compile_options(-O1 -g1 -fno-omit-frame-pointer -fsanitize=thread)
  add_link_options(-fsanitize=thread)
  add_compile_definitions(__SANITIZE_THREAD__)  # as GCC says it
endif()

if(ORVANE_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()

find_program(CCACHE ccache)
if(CCACHE)  # ccache caches objects that use precompiled headers only with these options
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
endif()

# Precompiled headers. A file must still include what it uses: the preset "debug" compiles without
# them (CMAKE_DISABLE_PRECOMPILE_HEADERS).
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)  # makes the file depend on the content only, for ccache
  set(pchOptions "SHELL:-Xclang -fno-pch-timestamp")
else()
  set(pchOptions -fpch-preprocess)
endif()

function(orvane_headers name)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINK;OPTIONS" ${ARGN})
  set(source ${CMAKE_BINARY_DIR}/${name}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "")
  add_library(${name} OBJECT ${source})
  target_link_libraries(${name} PRIVATE ${ARG_LINK})
  target_compile_options(${name} PRIVATE ${pchOptions} ${ARG_OPTIONS})
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

set(headers <algorithm> <array> <cstdint> <filesystem> <functional> <map> <memory> <optional>
            <string> <string_view> <utility> <vector>)
orvane_headers(src_headers HEADERS ${headers} OPTIONS ${fuzzOptions})
set(windowHeaders <QApplication> <QComboBox> <QLineEdit> <QPainter> <QPlainTextEdit> <QPushButton>
                  <QScreen> <QTreeWidget> <QWidget>)
orvane_headers(window_headers HEADERS ${headers} ${windowHeaders} LINK Qt6::Widgets)
# Tests are compiled without optimisation in every preset, because compiling takes longer than running.
set(testOptions -O0 -fPIC)
if(ORVANE_SANITIZE AND BUILD_TESTING)  # ./test builds all tests in this preset
  set(testHeaders ${headers} <sstream> <gmock/gmock.h> <gtest/gtest.h>)
  orvane_headers(test_headers HEADERS ${testHeaders} LINK GTest::gmock OPTIONS ${testOptions})
  orvane_headers(window_test_headers HEADERS ${testHeaders} ${windowHeaders}
                 LINK Qt6::Widgets GTest::gmock OPTIONS ${testOptions})
endif()

# With the options that the headers were compiled with.
function(orvane_use_headers target headers)
  get_target_property(options ${headers} COMPILE_OPTIONS)
  target_compile_options(${target} PRIVATE ${options})
  target_precompile_headers(${target} REUSE_FROM ${headers})
endfunction()

# The library of a folder of src: the target orvane_NAME, which others link as orvane::NAME. Headers
# are included by their path below src/, for example "foundation/paths.h". WITH_QT: it uses Qt
# Widgets.
function(orvane_library name)
  cmake_parse_arguments(ARG "WITH_QT" "" "SOURCES;LINK" ${ARGN})
  set(target orvane_${name})
  add_library(${target} STATIC ${ARG_SOURCES})
  add_library(orvane::${name} ALIAS ${target})
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PUBLIC ${ARG_LINK})
  if(ARG_WITH_QT)
    orvane_use_headers(${target} window_headers)
  else()
    orvane_use_headers(${target} src_headers)
  endif()
endfunction()

# A GoogleTest program, registered with ctest as one test. ./test runs it under the sanitizers.
# IN_RELEASE: ./test runs it in the release build too. This is for tests of the whole program and of
# code that depends on the optimiser. WITH_QT: it tests the window.
function(orvane_test name)
  cmake_parse_arguments(ARG "IN_RELEASE;WITH_QT" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LINK} GTest::gmock_main)
  target_compile_options(${name} PRIVATE ${testOptions})
  if(ORVANE_SANITIZE AND ARG_WITH_QT)
    orvane_use_headers(${name} window_test_headers)
  elseif(ORVANE_SANITIZE)
    orvane_use_headers(${name} test_headers)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  if(ARG_IN_RELEASE)
    add_dependencies(program-tests ${name})
  elseif(NOT ORVANE_SANITIZE)
    set_tests_properties(${name} PROPERTIES LABELS under-sanitizers)
  endif()
endfunction()
