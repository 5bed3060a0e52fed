# SPDX-License-Identifier: Apache-2.0
# 64-bit Windows, by the mingw-w64 cross compiler. `./dev windows` says where windows/deps.sh has put what it links.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(target x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${target}-gcc-posix)
set(CMAKE_CXX_COMPILER ${target}-g++-posix)
set(CMAKE_RC_COMPILER ${target}-windres)

# Another prefix than the last time's takes its place.
if(DEFINED ENV{QORVI_WINDOWS_DEPS})
  set(QORVI_WINDOWS_DEPS "$ENV{QORVI_WINDOWS_DEPS}" CACHE PATH "What windows/deps.sh has built" FORCE)
endif()
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QORVI_WINDOWS_DEPS)
if(NOT IS_DIRECTORY "${QORVI_WINDOWS_DEPS}")
  message(FATAL_ERROR "QORVI_WINDOWS_DEPS is not set; it is the folder that windows/deps.sh says")
endif()
# Nothing of this machine's own libraries is found.
set(CMAKE_FIND_ROOT_PATH ${QORVI_WINDOWS_DEPS} /usr/${target})
set(CMAKE_PREFIX_PATH ${QORVI_WINDOWS_DEPS})
# The packages there say more than CMake's own modules would find.
set(CMAKE_FIND_PACKAGE_PREFER_CONFIG ON)
set(ENV{PKG_CONFIG_LIBDIR} ${QORVI_WINDOWS_DEPS}/lib/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Tests run under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine)
