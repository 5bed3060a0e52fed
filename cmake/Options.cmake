# SPDX-License-Identifier: Apache-2.0
# Compiler settings shared by our own targets. They are private to us: nobody who links the library inherits them.

find_program(QORVI_CCACHE ccache)
if(QORVI_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${QORVI_CCACHE})
endif()

set(QORVI_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
option(QORVI_WERROR "Treat warnings as errors" OFF)

file(RELATIVE_PATH QORVI_SOURCE_FROM_BUILD ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR})
string(REGEX REPLACE "/$" "" QORVI_SOURCE_FROM_BUILD "${QORVI_SOURCE_FROM_BUILD}")
add_library(qorvi_options INTERFACE)
target_compile_options(qorvi_options INTERFACE
  -Wall -Wextra -Wshadow
  # A log line's arguments fit its format, which is written where it is used.
  -Werror=format -Werror=format-nonliteral
  # Unique symbols would keep a library in the process after the host unloads it.
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>
  # GCC 12 sees overlaps in std::string's own code where there are none.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  # Log lines name their source file relative to the repository. ccache may hand the compiler paths relative to the build
  # folder.
  -fmacro-prefix-map=${CMAKE_SOURCE_DIR}/= -fmacro-prefix-map=${QORVI_SOURCE_FROM_BUILD}/=
  # RapidJSON reports want of memory.
  "SHELL:-include ${CMAKE_SOURCE_DIR}/src/json/AllocationFailure.h")
if(QORVI_WERROR)
  target_compile_options(qorvi_options INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # RapidJSON 1.1 predates the rewritten comparison operators of C++20.
  target_compile_options(qorvi_options INTERFACE -Wthread-safety -Wno-ambiguous-reversed-operator)
  # RapidJSON 1.1 adds to the null pointer of its empty stack.
  if(QORVI_SANITIZE MATCHES "undefined")
    target_compile_options(qorvi_options INTERFACE -fno-sanitize=pointer-overflow)
  endif()
endif()
if(QORVI_SANITIZE)
  add_compile_options(-fsanitize=${QORVI_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QORVI_SANITIZE})
endif()

# qorvi_shared_library(name sources...): a shared library of ours, hidden but for what it marks as exported;
# it defines <NAME>_BUILD while it is being built.
function(qorvi_shared_library name)
  add_library(${name} SHARED ${ARGN})
  string(TOUPPER ${name} upper)
  target_compile_definitions(${name} PRIVATE ${upper}_BUILD)
  target_link_libraries(${name} PRIVATE qorvi_options)
  target_link_options(${name} PRIVATE -Wl,--no-undefined)
  if(QORVI_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_link_options(${name} PRIVATE -Wl,-z,undefs)
  endif()
endfunction()
