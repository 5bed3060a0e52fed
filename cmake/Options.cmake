# SPDX-License-Identifier: Apache-2.0
# Compiler settings shared by our own targets. They are private to us: nobody who links the library inherits them.

find_program(QORVI_CCACHE ccache)
if(QORVI_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${QORVI_CCACHE})
endif()

set(QORVI_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
option(QORVI_WERROR "Treat warnings as errors" OFF)

file(RELATIVE_PATH QORVI_SOURCE_FROM_BUILD ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR})
string(REGEX REPLACE "/$" "" QORVI_SOURCE_FROM_BUILD "${QORVI_SOURCE_FROM_BUILD}")
add_library(qorvi_options INTERFACE)
if(MSVC)
  include(${CMAKE_CURRENT_LIST_DIR}/Msvc.cmake)
else()
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
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/= -fmacro-prefix-map=${QORVI_SOURCE_FROM_BUILD}/=
    # RapidJSON reports want of memory.
    "SHELL:-include ${PROJECT_SOURCE_DIR}/src/json/AllocationFailure.h")
endif()
if(QORVI_WERROR)
  target_compile_options(qorvi_options INTERFACE $<IF:$<BOOL:${MSVC}>,/WX,-Werror>)
endif()
if(WIN32)
  # Windows 10 and later; of its headers no macros min, max and GetObject, and not what nobody needs.
  target_compile_definitions(qorvi_options INTERFACE _WIN32_WINNT=0x0A00 NOGDI NOMINMAX WIN32_LEAN_AND_MEAN)
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
  # Has the standard library compare indices with sizes: an element just behind the last is memory of the vector's, where
  # it has room to grow, and no sanitizer's matter.
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
  add_link_options(-fsanitize=${QORVI_SANITIZE})
endif()

# Where something goes on being found wherever the installed tree is moved: libraries beside each other, and from the
# programs in the folder of libraries.
file(RELATIVE_PATH QORVI_LIBRARIES_FROM_PROGRAMS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(CMAKE_INSTALL_RPATH "$ORIGIN/${QORVI_LIBRARIES_FROM_PROGRAMS}")

# Headers for other programs stand in a folder of their own, from which their includes are written.
set(QORVI_INCLUDE_FOLDER ${CMAKE_INSTALL_INCLUDEDIR}/qorvi)

# qorvi_exported(name BASE folder HEADERS headers...): a library for other programs, which is known to those that take
# the project in by the name that the installed package gives it. `folder` is what its headers' includes are written from.
function(qorvi_exported name)
  cmake_parse_arguments(E "" "BASE" "HEADERS" ${ARGN})
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${E_BASE} FILES ${E_HEADERS})
  set_target_properties(${name} PROPERTIES INSTALL_RPATH "$ORIGIN")
  add_library(QorviViewPlugin::${name} ALIAS ${name})
endfunction()

# qorvi_has_private_types(name): its classes have members of types in unnamed namespaces. Where several files are compiled as
# one, the file that includes them looks to GCC as if it might be included elsewhere.
function(qorvi_has_private_types name)
  if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${name} PRIVATE -Wno-subobject-linkage)
  endif()
endfunction()

# qorvi_shared_library(name SOURCES sources... HEADERS headers...): a shared library of the platform, hidden but for what
# it marks as exported; it defines <NAME>_BUILD while it is being built. The headers are those for hosts and the plugin.
function(qorvi_shared_library name)
  cmake_parse_arguments(S "" "" "SOURCES;HEADERS" ${ARGN})
  add_library(${name} SHARED ${S_SOURCES})
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  qorvi_exported(${name} BASE ${PROJECT_SOURCE_DIR}/src/platform HEADERS ${S_HEADERS})
  string(TOUPPER ${name} upper)
  target_compile_definitions(${name} PRIVATE ${upper}_BUILD)
  target_link_libraries(${name} PRIVATE qorvi_options)
  if(NOT WIN32)  # where nothing undefined can be linked
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
  if(QORVI_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_link_options(${name} PRIVATE -Wl,-z,undefs)
  endif()
endfunction()
