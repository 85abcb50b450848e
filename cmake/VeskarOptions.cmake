# SPDX-License-Identifier: Apache-2.0
# Build options, and the defaults of every build.

option(VESKAR_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(VESKAR_BUILD_BENCHMARKS "Build the benchmarks (needs Google Benchmark)" OFF)
option(VESKAR_BUILD_FUZZERS "Build the fuzz targets (needs clang with libFuzzer)" OFF)
option(VESKAR_BUILD_HOST "Build libveskar-host, the library for hosts" ON)
option(VESKAR_BUILD_WORKBENCH "Build the veskar command-line program (needs libveskar-host)"
       ${PROJECT_IS_TOP_LEVEL})
set(VESKAR_PYTHON OFF CACHE STRING
    "Build the Python package: ON, OFF, or AUTO where pybind11 is installed (needs the workbench)")
set_property(CACHE VESKAR_PYTHON PROPERTY STRINGS AUTO ON OFF)
option(VESKAR_BUILD_EXAMPLES "Build the example programs" ${PROJECT_IS_TOP_LEVEL})
set(VESKAR_REPORT AUTO CACHE STRING
    "Build the page of `veskar report` with Node.js: ON, OFF, or AUTO where that can be done")
set_property(CACHE VESKAR_REPORT PROPERTY STRINGS AUTO ON OFF)
set(VESKAR_LIVE AUTO CACHE STRING
    "Build `veskar run` and `veskar record`: ON, OFF, or AUTO where their libraries are installed")
set_property(CACHE VESKAR_LIVE PROPERTY STRINGS AUTO ON OFF)
set(VESKAR_LIVE_RTSP AUTO CACHE STRING
    "Let `veskar run` read RTSP with GStreamer: ON, OFF, or AUTO where that is installed")
set_property(CACHE VESKAR_LIVE_RTSP PROPERTY STRINGS AUTO ON OFF)
set(VESKAR_VIEW AUTO CACHE STRING
    "Let `veskar run` show itself in browsers: ON, OFF, or AUTO where libmicrohttpd is installed")
set_property(CACHE VESKAR_VIEW PROPERTY STRINGS AUTO ON OFF)
set(VESKAR_LIVE_SNAPSHOT AUTO CACHE STRING
    "Let `veskar run` ask cameras for pictures: ON, OFF, or AUTO where libcurl is installed")
set_property(CACHE VESKAR_LIVE_SNAPSHOT PROPERTY STRINGS AUTO ON OFF)
set(VESKAR_CALIBRATE AUTO CACHE STRING
    "Build `veskar calibrate`: ON, OFF, or AUTO where Ceres is installed")
set_property(CACHE VESKAR_CALIBRATE PROPERTY STRINGS AUTO ON OFF)
option(VESKAR_INSTALL "Install the library and what else is built" ${PROJECT_IS_TOP_LEVEL})
option(VESKAR_WERROR "Turn warnings in veskar's own code into errors" OFF)
set(VESKAR_SANITIZE "" CACHE STRING "Sanitizers for everything built here, for example address,undefined")
option(VESKAR_DEBUG_INFO "Compile the library with debug information; its packages are stripped" OFF)
option(VESKAR_QUICK_BUILD "Compile several sources of the workbench and the tests together" OFF)
set(VESKAR_COVERAGE OFF CACHE BOOL "Instrument for line coverage")

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Shared unless BUILD_SHARED_LIBS=OFF is set. Not a cache variable, since an enclosing project would
# read it, too.
set(VESKAR_STATIC OFF)
if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
  set(VESKAR_STATIC ON)
endif()

# Shipped files do not contain the build directory, and builds are reproducible.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
add_compile_options($<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)
if(CMAKE_SYSROOT)
  add_compile_options($<$<CONFIG:Release>:-ffile-prefix-map=${CMAKE_SYSROOT}=>)
endif()

if(VESKAR_SANITIZE)
  add_compile_options(-fsanitize=${VESKAR_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VESKAR_SANITIZE})
endif()
if(VESKAR_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# Where the compiler has a library directory per architecture (Debian), ours are installed there,
# too, for any prefix.
if(PROJECT_IS_TOP_LEVEL AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH "Library directory")
endif()
