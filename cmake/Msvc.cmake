# SPDX-License-Identifier: Apache-2.0
# What cmake/Options.cmake says to other compilers, for Microsoft's, which none of our tests runs (docs/windows.md).
target_compile_options(qorvi_options INTERFACE
  /W4 /utf-8 /permissive- /Zc:__cplusplus /Zc:preprocessor /EHsc /bigobj
  # A base or member of a class of the standard library's is the same on both sides, where one library is on both.
  /wd4251 /wd4275
  "/d1trimfile:${PROJECT_SOURCE_DIR}/"
  "SHELL:/FI ${PROJECT_SOURCE_DIR}/src/json/AllocationFailure.h")
