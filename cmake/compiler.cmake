# Every target of the project is compiled under the same rules: warnings are errors.
# (GCC 12 sees -Wrestrict in "literal" + std::string where there is none: its bug 105651.)
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
                    -Wno-restrict -Werror)

if(ORVANE_SANITIZE)
  # GCC 12 takes what the sanitizers add to <regex> for a read of unset memory.
  add_compile_options(-Wno-maybe-uninitialized -O1 -g1 -fno-omit-frame-pointer
                      -fsanitize=address,undefined -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()

if(ORVANE_FUZZ)  # clang warns of other things than the compiler of the project
  add_compile_options(-Wno-error -O1 -g1 -fno-omit-frame-pointer -fno-sanitize-recover=all
                      -fsanitize=fuzzer-no-link,address,undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

if(ORVANE_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

# A library of one subsystem. Headers are included by their path below src/, as in
# "foundation/path_text.h".
function(orvane_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_LINK})
endfunction()

# A GoogleTest program, registered with ctest as one test.
function(orvane_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LINK} GTest::gmock_main)
  add_test(NAME ${name} COMMAND ${name})
endfunction()
