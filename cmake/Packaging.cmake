# Debian packages from the install components (scripts/package runs cpack in the release build):
# libquoddle<SOVERSION>, libquoddle-dev and quoddle-tools, installed under /usr.
include(CPackComponent)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quoddle)
set(CPACK_PACKAGE_VENDOR "The Quoddle developers")
set(CPACK_PACKAGE_CONTACT "The Quoddle developers <quoddle@users.noreply.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# dpkg-shlibdeps computes what the libraries and programs link. Our own libraries lie in another
# package's staging folder, so it looks for them in the build tree; the packages that need them
# depend on libquoddle0 by name.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/quoddle)
# The runtime package says which libraries it provides (a shlibs file), so that packages built
# against it depend on it by the SONAME.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(libs_package libquoddle${QUODDLE_SOVERSION})
set(exact_version "${libs_package} (= ${PROJECT_VERSION})")
set(licence_note "Quoddle is free software under the MIT licence.")

cpack_add_component_group(libs)
cpack_add_component_group(dev)
cpack_add_component_group(tools)
cpack_add_component(runtime GROUP libs)
cpack_add_component(qt_runtime GROUP libs)
cpack_add_component(development GROUP dev)
cpack_add_component(qt_development GROUP dev)
cpack_add_component(tools GROUP tools)

set(CPACK_DEBIAN_LIBS_PACKAGE_NAME ${libs_package})
# GIO reads files' content types (for their icons and default applications) from the shared MIME
# database; without it every file is just data. GLib itself only recommends it.
set(CPACK_DEBIAN_LIBS_PACKAGE_RECOMMENDS "shared-mime-info")
# CPack puts the project's description in front as each package's summary line; these are the
# paragraphs after it.
set(CPACK_DEBIAN_LIBS_DESCRIPTION "The shared libraries of the Quoddle framework: the toolkit-free
core (libquoddle) and the Qt 6 layer (libquoddle-qt), with the translations of their interface
strings. Editing operations on a text view with selection and undo, encoding detection, line
endings, a line-number gutter, typed preferences, folder monitors and more.

${licence_note}")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libquoddle-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# The headers include ICU's; the pkg-config files name the others (pkg-config reads
# Requires.private even without --static). The Qt layer wants Qt's headers as well.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "${exact_version}, libicu-dev, libssl-dev, libfontconfig-dev, libplist-dev, libglib2.0-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS "qt6-base-dev, pkg-config")
set(CPACK_DEBIAN_DEV_DESCRIPTION "The development files of the Quoddle framework: headers, the CMake
package (find_package(Quoddle)) and the pkg-config files (quoddle, quoddle-qt) for building
applications on it.

${licence_note}")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME quoddle-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION text)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${exact_version}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "The programs of the Quoddle framework: quod runs its text operations
(line endings, sorting, case, encodings, ...) on files and standard input; quoddle-demo is a
small Qt editor that shows the framework.

${licence_note}")

# Debian looks for each package's licence in /usr/share/doc/<package>/copyright.
foreach(group_component IN ITEMS "${libs_package};runtime" "libquoddle-dev;development"
                                 "quoddle-tools;tools")
  list(GET group_component 0 package)
  list(GET group_component 1 component)
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}
    RENAME copyright COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
