# Install rules, the CMake package config, the pkg-config file and the Debian
# packages (make package). Three components:
#   runtime  the shared library, the schema SQL, the data files, the licence
#   dev      headers, CMake package config, pkg-config file, the .so link
#   tools    orvmysql-schema

include(CMakePackageConfigHelpers)

set(ORVMYSQL_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/orvmysql)
set(ORVMYSQL_INSTALL_SCHEMADIR ${CMAKE_INSTALL_DATADIR}/orvmysql/schema)

install(TARGETS orvmysql EXPORT orvmysqlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/orvmysql
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

install(EXPORT orvmysqlTargets NAMESPACE orvmysql::
  DESTINATION ${ORVMYSQL_INSTALL_CMAKEDIR} COMPONENT dev)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/orvmysqlConfig.cmake.in
  ${PROJECT_BINARY_DIR}/orvmysqlConfig.cmake
  INSTALL_DESTINATION ${ORVMYSQL_INSTALL_CMAKEDIR}
  PATH_VARS ORVMYSQL_INSTALL_SCHEMADIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvmysqlConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orvmysqlConfig.cmake ${PROJECT_BINARY_DIR}/orvmysqlConfigVersion.cmake
  DESTINATION ${ORVMYSQL_INSTALL_CMAKEDIR} COMPONENT dev)

# The pkg-config file finds the prefix from its own place, so the installed
# tree can be moved. It requires nothing: only the shared library is installed,
# and the public headers include none of the library's dependencies.
file(RELATIVE_PATH ORVMYSQL_PC_PREFIX_FROM_PCDIR
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" ORVMYSQL_PC_PREFIX_FROM_PCDIR "${ORVMYSQL_PC_PREFIX_FROM_PCDIR}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/orvmysql.pc.in ${PROJECT_BINARY_DIR}/orvmysql.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orvmysql.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/schema/ DESTINATION ${ORVMYSQL_INSTALL_SCHEMADIR}
  COMPONENT runtime FILES_MATCHING PATTERN "*.sql")
# Resource files of the library (languages, message catalogues).
install(DIRECTORY ${PROJECT_SOURCE_DIR}/data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/orvmysql
  COMPONENT runtime OPTIONAL)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)

if(TARGET orvmysql-schema)
  install(TARGETS orvmysql-schema RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

# make package: one Debian package per component, with the shared libraries
# each needs found by dpkg-shlibdeps.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvmysql)
set(CPACK_PACKAGE_VENDOR "orvmysql authors")
set(CPACK_PACKAGE_CONTACT "orvmysql authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
# The package installs where the build was configured to (make package: /usr),
# since the library finds its data files under that prefix.
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME liborvmysql${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME liborvmysql-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME orvmysql-tools)
include(CPack)
cpack_add_component(runtime DISPLAY_NAME "orvmysql library"
  DESCRIPTION "The shared library, the schema SQL and the data files")
cpack_add_component(dev DISPLAY_NAME "orvmysql development files"
  DESCRIPTION "Headers, CMake package config and pkg-config file" DEPENDS runtime)
cpack_add_component(tools DISPLAY_NAME "orvmysql tools"
  DESCRIPTION "orvmysql-schema: creates, checks and upgrades the schema")
