# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` puts where. Nothing in it names the prefix, so the installed tree may be moved.
include(CMakePackageConfigHelpers)

set(QORVI_PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/QorviViewPlugin)

# The plugin is loaded by its name, so its file has no version; those of the platform have.
install(TARGETS QorviViewPlugin ${QORVI_PLATFORM_LIBRARIES} QorviViewHost EXPORT QorviViewPlugin
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  FILE_SET HEADERS DESTINATION ${QORVI_INCLUDE_FOLDER} COMPONENT dev)
install(EXPORT QorviViewPlugin NAMESPACE QorviViewPlugin:: FILE QorviViewPluginTargets.cmake
  DESTINATION ${QORVI_PACKAGE_FOLDER} COMPONENT dev)
configure_package_config_file(cmake/QorviViewPluginConfig.cmake.in ${PROJECT_BINARY_DIR}/QorviViewPluginConfig.cmake
  INSTALL_DESTINATION ${QORVI_PACKAGE_FOLDER} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QorviViewPluginConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QorviViewPluginConfig.cmake ${PROJECT_BINARY_DIR}/QorviViewPluginConfigVersion.cmake
  DESTINATION ${QORVI_PACKAGE_FOLDER} COMPONENT dev)

file(RELATIVE_PATH QORVI_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(package QorviViewPlugin QorviViewHost)
  configure_file(cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endforeach()

install(DIRECTORY examples docs DESTINATION ${CMAKE_INSTALL_DATADIR}/qorvi COMPONENT dev)
if(QORVI_BUILD_PROGRAMS)
  set(programs viewctl viewserver)
  if(QORVI_BUILD_DRAWING)
    list(APPEND programs viewdraw)
  endif()
  install(TARGETS ${programs} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(FILES data/site.json DESTINATION ${CMAKE_INSTALL_DATADIR}/qorvi COMPONENT tools)
  foreach(completion bash:bash-completion/completions:viewctl zsh:zsh/site-functions:_viewctl
          fish:fish/vendor_completions.d:viewctl.fish)
    string(REPLACE ":" ";" parts ${completion})
    list(POP_FRONT parts shell folder name)
    install(FILES src/host/completion/viewctl.${shell} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder}
      RENAME ${name} COMPONENT tools)
  endforeach()
  if(NOT CMAKE_CROSSCOMPILING)
    install(DIRECTORY ${PROJECT_BINARY_DIR}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  endif()
endif()
