# How every target of the project is made. A library exports `include/` and nothing else: what stands
# in `src/` cannot be included from outside, and a library that is not linked cannot be included at all.

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

add_library(TessaraBuildFlags INTERFACE)
target_compile_options(TessaraBuildFlags INTERFACE
  # A fused multiply-add rounds once where the curves are defined with two roundings.
  -ffp-contract=off
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND (TESSARA_SANITIZE OR NOT CMAKE_BUILD_TYPE STREQUAL "Debug"))
  # Where it optimises, g++ 12 sees overruns and uninitialised values in sound uses of its own library
  # (an optional, a string that is assigned a literal, a vector that grows). The debug builds of both
  # compilers are the ones in which a warning is an error.
  target_compile_options(TessaraBuildFlags INTERFACE
    -Wno-error -Wno-array-bounds -Wno-maybe-uninitialized -Wno-restrict -Wno-stringop-overflow
    -Wno-stringop-overread)
endif()
# In debug builds the library stops at an index or an optional that is not there.
target_compile_definitions(TessaraBuildFlags INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(TessaraBuildFlags INTERFACE -Wthread-safety)
endif()
if(TESSARA_SANITIZE)
  target_compile_options(TessaraBuildFlags INTERFACE
    "-fsanitize=${TESSARA_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(TessaraBuildFlags INTERFACE "-fsanitize=${TESSARA_SANITIZE}")
endif()

# tessara_library(NAME [SOURCES ...] [PUBLIC ...] [PRIVATE ...])
# A static library with its public headers under include/; without sources, a header-only one.
function(tessara_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  if(ARG_SOURCES)
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC include PRIVATE src)
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} TessaraBuildFlags)
  else()
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE include)
    target_link_libraries(${name} INTERFACE ${ARG_PUBLIC})
  endif()
endfunction()

# tessara_program(NAME SOURCES ... LIBRARIES ...)
function(tessara_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} TessaraBuildFlags)
endfunction()

# tessara_test(NAME SOURCES ... LIBRARIES ...)
# One test program; CTest sees each of its cases. A program without cases is an error.
function(tessara_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  include(GoogleTest)
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock GTest::gtest_main TessaraBuildFlags)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

# tessara_benchmark(NAME SOURCES ... LIBRARIES ...)
function(tessara_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} benchmark::benchmark_main TessaraBuildFlags)
endfunction()

# tessara_fuzzer(NAME SOURCES ... LIBRARIES ...)
# A libFuzzer program, built with all others of its kind by the target `fuzzers`; its seeds stand in
# Fuzz/Corpus/NAME.
function(tessara_fuzzer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} TessaraBuildFlags)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  if(NOT TARGET fuzzers)
    add_custom_target(fuzzers)
  endif()
  add_dependencies(fuzzers ${name})
endfunction()
