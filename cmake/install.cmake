# What `cmake --install` and the Debian package put where. Components:
#   runtime  the library, the command line and its serving program
#   devel    headers, the CMake package, tagwright.pc
#   python   the module, into the interpreter's site-packages
#   package_python, package_settings  only in the .deb: the module in the
#            system's dist-packages, and /etc/tagwright/settings.conf
include(CMakePackageConfigHelpers)

install(TARGETS tagwright EXPORT TagwrightTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT devel
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS tagwright_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(TARGETS tagwright_serve_cli RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/tagwright
        COMPONENT runtime)
install(FILES ${TAGWRIGHT_MAN_PAGE}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
install(FILES ${TAGWRIGHT_COMPLETION}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT runtime)
install(FILES include/tagwright/tagwright.h include/tagwright/tagwright_c.h
              include/tagwright/site_context.h include/tagwright/export.h
              include/tagwright/plain_types.h
              ${CMAKE_CURRENT_BINARY_DIR}/generated/include/tagwright/version.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tagwright COMPONENT devel)

set(TAGWRIGHT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Tagwright)
install(EXPORT TagwrightTargets NAMESPACE Tagwright:: DESTINATION ${TAGWRIGHT_CMAKE_DIR}
        COMPONENT devel)
configure_package_config_file(packaging/TagwrightConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/TagwrightConfig.cmake INSTALL_DESTINATION ${TAGWRIGHT_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/TagwrightConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TagwrightConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/TagwrightConfigVersion.cmake
        DESTINATION ${TAGWRIGHT_CMAKE_DIR} COMPONENT devel)

configure_file(packaging/tagwright.pc.in ${CMAKE_CURRENT_BINARY_DIR}/tagwright.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tagwright.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT devel)

if(TAGWRIGHT_PYTHON)
  install(TARGETS tagwright_python LIBRARY DESTINATION ${TAGWRIGHT_PYTHON_INSTALL_DIR}
          COMPONENT python)
  install(TARGETS tagwright_python LIBRARY DESTINATION lib/python3/dist-packages
          COMPONENT package_python EXCLUDE_FROM_ALL)
endif()
install(FILES packaging/settings.conf DESTINATION /etc/tagwright
        COMPONENT package_settings EXCLUDE_FROM_ALL)

set(CPACK_PACKAGE_NAME tagwright)
set(CPACK_PACKAGE_VENDOR "Tagwright")
set(CPACK_PACKAGE_CONTACT "Tagwright maintainers <tagwright@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "locate and rewrite parts of HTML and XML documents on disk: library, C API, Python, CLI")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_COMPONENTS_ALL runtime devel package_python package_settings)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/packaging/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
# The module is built for one Python minor version, the one of the build.
if(TAGWRIGHT_PYTHON)
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS
      "python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}), python3 (<< ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}.99)")
endif()
include(CPack)
