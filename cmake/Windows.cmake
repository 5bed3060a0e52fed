# SPDX-License-Identifier: Apache-2.0
# The compiler's own libraries and Qt's stand beside our programs, in the build folder and installed: there is no path in a
# file by which Windows would find them elsewhere. All who call the library link these very ones.
get_target_property(qt_core Qt5::Core IMPORTED_LOCATION_RELEASE)
set(QORVI_WINDOWS_LIBRARIES ${qt_core})
foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE file
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  list(APPEND QORVI_WINDOWS_LIBRARIES ${file})
endforeach()
file(COPY ${QORVI_WINDOWS_LIBRARIES} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} FOLLOW_SYMLINK_CHAIN)

if(QORVI_INSTALL)
  install(FILES ${QORVI_WINDOWS_LIBRARIES} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()
