# Third-party libraries, all taken from the distribution. Every one is a system include, so that its
# headers are held to its own standard of warnings and not to ours.

find_package(Threads REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(fmt 9 REQUIRED)

find_path(ASIO_INCLUDE_DIR asio.hpp REQUIRED)
add_library(Asio INTERFACE)
target_include_directories(Asio SYSTEM INTERFACE "${ASIO_INCLUDE_DIR}")
# Asio knows g++'s coroutines by itself, and clang's only when told.
target_compile_definitions(Asio INTERFACE
  ASIO_STANDALONE ASIO_NO_DEPRECATED ASIO_HAS_CO_AWAIT ASIO_HAS_STD_COROUTINE)
target_link_libraries(Asio INTERFACE Threads::Threads)

find_package(PkgConfig REQUIRED)
pkg_check_modules(libsodium REQUIRED IMPORTED_TARGET libsodium)
pkg_check_modules(utf8proc REQUIRED IMPORTED_TARGET libutf8proc)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  pkg_check_modules(libevdev REQUIRED IMPORTED_TARGET libevdev)
  pkg_check_modules(glib REQUIRED IMPORTED_TARGET glib-2.0)
  pkg_check_modules(libudev REQUIRED IMPORTED_TARGET libudev)
  pkg_check_modules(gio REQUIRED IMPORTED_TARGET gio-unix-2.0)
  pkg_check_modules(xcb REQUIRED IMPORTED_TARGET xcb)
  pkg_check_modules(wayland REQUIRED IMPORTED_TARGET wayland-client)
  find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
endif()

if(TESSARA_BUILD_TESTS)
  find_package(GTest REQUIRED)
endif()
if(TESSARA_BUILD_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()
