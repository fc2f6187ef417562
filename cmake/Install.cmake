# Install rules, the package configuration (find_package(Quoddle)), the pkg-config files and the
# Debian packages (cpack, scripts/package).
#
# Components, which the Debian packages group:
#   runtime, qt_runtime          libquoddle0      the shared libraries, the catalogues, the licence
#   development, qt_development  libquoddle-dev   headers, CMake and pkg-config files
#   tools                        quoddle-tools    quod and the demo editor
# `cmake --install BUILD --component runtime` (then development) installs the core alone.
include(CMakePackageConfigHelpers)
set(QUODDLE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quoddle)

install(TARGETS quoddle EXPORT QuoddleTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  FILE_SET HEADERS COMPONENT development
  FILE_SET generated_headers COMPONENT development)
install(EXPORT QuoddleTargets NAMESPACE Quoddle:: DESTINATION ${QUODDLE_CMAKE_DIR}
  COMPONENT development)
if(TARGET quoddle-qt)
  install(TARGETS quoddle-qt EXPORT QuoddleQtTargets
    LIBRARY COMPONENT qt_runtime NAMELINK_COMPONENT qt_development
    ARCHIVE COMPONENT qt_development
    FILE_SET HEADERS COMPONENT qt_development)
  install(EXPORT QuoddleQtTargets NAMESPACE Quoddle:: DESTINATION ${QUODDLE_CMAKE_DIR}
    COMPONENT qt_development)
endif()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QuoddleConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QuoddleConfig.cmake INSTALL_DESTINATION ${QUODDLE_CMAKE_DIR})
# Before 1.0 a minor release may change the interface, so 0.2 accepts 0.2.x only. From 1.0 on
# this becomes SameMajorVersion.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuoddleConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QuoddleConfig.cmake ${PROJECT_BINARY_DIR}/QuoddleConfigVersion.cmake
  DESTINATION ${QUODDLE_CMAKE_DIR} COMPONENT development)

# The pkg-config files name the prefix, which `cmake --install --prefix` may choose after
# configuring, so they are finished at install time: everything but @prefix@ is filled in now.
function(quoddle_install_pkg_config name component)
  set(prefix "@prefix@")
  set(template ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc.in)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in ${template} @ONLY)
  install(CODE "
    set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
    configure_file(\"${template}\" \"${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc\" @ONLY)"
    COMPONENT ${component})
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component})
endfunction()
quoddle_install_pkg_config(quoddle development)
if(TARGET quoddle-qt)
  quoddle_install_pkg_config(quoddle-qt qt_development)
endif()

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)

include(${CMAKE_CURRENT_LIST_DIR}/Packaging.cmake)
