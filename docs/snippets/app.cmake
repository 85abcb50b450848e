# SPDX-License-Identifier: Apache-2.0
# A host's project.
cmake_minimum_required(VERSION 3.21)
project(app LANGUAGES CXX)
file(WRITE "${CMAKE_BINARY_DIR}/app.cpp"
     "#include <veskar/veskar.h>\nint main() { return Veskar::Config{}.module.trackKillTime > 0.0; }\n")
add_executable(app "${CMAKE_BINARY_DIR}/app.cpp")
include("${SNIPPET}")
