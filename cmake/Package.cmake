# SPDX-License-Identifier: Apache-2.0
# Debian packages: the library with its platform, what builds with it, and the programs. `./dev package` makes them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qorvi-view-plugin)
set(CPACK_PACKAGE_VENDOR "QorviViewPlugin")
set(CPACK_PACKAGE_CONTACT "QorviViewPlugin developers <developers@qorvi.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Folders that Debian expects to be readable by all, whatever the umask of who builds.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# What each needs of Debian is found out from its files; ours need each other besides.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(own "qorvi-view-plugin (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME qorvi-view-plugin)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_DEV_PACKAGE_NAME qorvi-view-plugin-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${own}, qtbase5-dev (>= 5.15)")
set(CPACK_COMPONENT_DEV_DESCRIPTION "Headers, CMake package, pkg-config files, documents and examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qorvi-view-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${own}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "fonts-dejavu-core, fonts-droid-fallback, fonts-symbola")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "viewctl, viewserver and viewdraw, with a sample site.")

foreach(component runtime dev tools)
  string(TOUPPER ${component} upper)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME} RENAME copyright
    COMPONENT ${component})
endforeach()
include(CPack)
