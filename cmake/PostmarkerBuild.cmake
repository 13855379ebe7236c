# Flags for all targets, third-party libraries, and the two functions that the folders use:
# pm_library (one static library and its unit tests a folder) and pm_test (one test program).

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(pm_flags INTERFACE)
target_include_directories(pm_flags INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(pm_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Werror
  # GCC 12 reports a literal joined with a temporary string as an overlap that can't be.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

# No path of this machine stands in what is built, so that one clone can use what was compiled in another.
add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=/postmarker>")

# GCC collects its garbage when it has grown by little. With this much memory to begin with it hardly ever does.
add_compile_options("$<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=1000000>")

# Lets ccache see which precompiled header a source uses. It means nothing to the compilation itself.
add_compile_options("$<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>")

if(POSTMARKER_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(POSTMARKER_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(WIN32)
  target_compile_definitions(pm_flags INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX STRICT
    _WIN32_WINNT=0x0601 WINVER=0x0601 NTDDI_VERSION=0x06010000 _WIN32_IE=0x0800)
  # No MinGW runtime DLL may be needed at run time. Calls back from 32-bit system code do not always keep
  # the stack aligned to 16 bytes.
  add_link_options(-static -static-libgcc -static-libstdc++)
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL x86)
    add_compile_options(-mstackrealign)
  endif()
  set(PM_WINE ${CMAKE_SOURCE_DIR}/scripts/wine-run)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${PM_WINE})
endif()

# For test programs. Under Wine nobody asks for their lines; the sanitizers' reports on Linux name them.
set(PM_QUICK_COMPILE -O0 $<$<BOOL:${WIN32}>:-g0>)
# LLD links a test program in a tenth of a second, the GNU linker in five. What ships keeps the toolchain's own.
if(WIN32)
  set(PM_QUICK_LINK "SHELL:-wrapper ${CMAKE_SOURCE_DIR}/cmake/link-with-lld")
else()
  set(PM_QUICK_LINK -fuse-ld=lld)
endif()

find_package(Threads REQUIRED)

# SQLite and GoogleTest, as scripts/setup has compiled them for this target.
if(WIN32)
  set(PM_DEPS ${CMAKE_SOURCE_DIR}/build/deps/${PM_TRIPLE})
else()
  set(PM_DEPS ${CMAKE_SOURCE_DIR}/build/deps/native)
endif()
foreach(library gtest gmock gmock_main sqlite)
  add_library(pm_${library} STATIC IMPORTED)
  set_target_properties(pm_${library} PROPERTIES IMPORTED_LOCATION ${PM_DEPS}/lib/lib${library}.a)
  target_link_libraries(pm_${library} INTERFACE Threads::Threads)
endforeach()
target_link_libraries(pm_gmock INTERFACE pm_gtest)
target_link_libraries(pm_gmock_main INTERFACE pm_gmock)
target_include_directories(pm_gtest INTERFACE /usr/src/googletest/googletest/include)
target_include_directories(pm_gmock INTERFACE /usr/src/googletest/googlemock/include)
target_include_directories(pm_sqlite INTERFACE ${CMAKE_SOURCE_DIR}/build/deps/sqlite)

# nlohmann-json is header-only; the Debian package's folder is named outright for the cross builds.
add_library(pm_json INTERFACE)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/third_party)
file(CREATE_LINK /usr/include/nlohmann ${CMAKE_BINARY_DIR}/third_party/nlohmann SYMBOLIC)
target_include_directories(pm_json SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/third_party)

# The headers of the test library take most of a test file's compile time, so they are compiled once for all.
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/test_headers.cpp CONTENT "int main() { return 0; }\n")
add_executable(pm_test_headers EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/test_headers.cpp)
target_link_libraries(pm_test_headers PRIVATE pm_flags pm_gmock_main pm_test_support)
target_compile_options(pm_test_headers PRIVATE ${PM_QUICK_COMPILE})
target_precompile_headers(pm_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)

# The standard library's headers, and in the Windows builds the platform's, take half of the product's compile time: they
# are compiled once as well. clang-tidy, which reads each source without them, shows what one forgot to include.
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/product_headers.cpp CONTENT "static_assert(true);\n")
add_library(pm_product_headers STATIC EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/product_headers.cpp)
target_link_libraries(pm_product_headers PRIVATE pm_flags)
target_precompile_headers(pm_product_headers PRIVATE
  $<$<BOOL:${WIN32}>:<windows.h$<ANGLE-R>>
  <algorithm> <array> <cstdint> <cstring> <functional> <map> <memory> <optional> <set> <span> <string> <string_view>
  <utility> <vector>)

# pm_test(NAME SOURCES... LINKS...): one GoogleTest program and one CTest entry for it. The JSON report of
# each goes to <build>/reports, from which scripts/test counts. GUI: its windows need the foreground, so
# nothing else runs meanwhile.
function(pm_test name)
  cmake_parse_arguments(ARG "GUI" "TIMEOUT" "SOURCES;LINKS;ARGS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE pm_flags ${ARG_LINKS} pm_test_support pm_gmock_main)
  # Test programs wait for what they test and not for themselves: they are compiled for a quick build.
  target_compile_options(${name} PRIVATE ${PM_QUICK_COMPILE})
  target_link_options(${name} PRIVATE ${PM_QUICK_LINK})
  target_precompile_headers(${name} REUSE_FROM pm_test_headers)
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  # A Windows program takes a path without a drive for a relative one.
  set(report ${CMAKE_BINARY_DIR}/reports/${name}.json)
  if(WIN32)
    set(report Z:${report})
  endif()
  add_test(NAME ${name} COMMAND ${name}
    --gtest_brief=1 --gtest_output=json:${report} ${ARG_ARGS})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
  if(ARG_GUI)
    set_tests_properties(${name} PROPERTIES RUN_SERIAL TRUE)
  endif()
endfunction()
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/reports)

# pm_library(NAME SOURCES... WIN_SOURCES... POSIX_SOURCES... LINKS... WIN_LINKS... TESTS... WIN_TESTS...
# TEST_LINKS...): the static library pm_NAME of one folder, and NAME_test with the unit tests beside its
# sources. What a folder may include stands in scripts/check-sources.
function(pm_library name)
  cmake_parse_arguments(ARG "" ""
    "SOURCES;WIN_SOURCES;POSIX_SOURCES;LINKS;WIN_LINKS;TESTS;WIN_TESTS;TEST_LINKS" ${ARGN})
  set(sources ${ARG_SOURCES})
  set(links ${ARG_LINKS})
  set(tests ${ARG_TESTS})
  if(WIN32)
    list(APPEND sources ${ARG_WIN_SOURCES})
    list(APPEND links ${ARG_WIN_LINKS})
    list(APPEND tests ${ARG_WIN_TESTS})
  else()
    list(APPEND sources ${ARG_POSIX_SOURCES})
  endif()
  if(NOT sources)
    return()
  endif()
  add_library(pm_${name} STATIC ${sources})
  target_link_libraries(pm_${name} PUBLIC pm_records ${links} PRIVATE pm_flags)
  target_precompile_headers(pm_${name} REUSE_FROM pm_product_headers)
  if(BUILD_TESTING AND tests AND NOT POSTMARKER_FUZZ AND NOT POSTMARKER_BENCH)
    pm_test(${name}_test SOURCES ${tests} LINKS pm_${name} pm_test_support ${ARG_TEST_LINKS})
  endif()
endfunction()

# Where the suite's tree is laid out to run from.
set(PM_STAGE ${CMAKE_BINARY_DIR}/stage)

# pm_version_resource(TARGET FILE_NAME DESCRIPTION TYPE): version information and the manifest for the platform's
# current controls.
function(pm_version_resource target file_name description type)
  set(PM_FILE_NAME ${file_name})
  set(PM_FILE_DESCRIPTION ${description})
  set(PM_FILE_TYPE ${type})
  if(type STREQUAL VFT_APP)
    set(PM_MANIFEST_ID 1)
  else()
    set(PM_MANIFEST_ID 2)
  endif()
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target}-resource)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/version.rc.in ${folder}/version.rc @ONLY)
  target_sources(${target} PRIVATE ${folder}/version.rc)
  set_source_files_properties(${folder}/version.rc PROPERTIES
    OBJECT_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/controls.manifest)
endfunction()
