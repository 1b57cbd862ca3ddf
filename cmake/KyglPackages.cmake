# Debian packages, by `cpack`. They want CMAKE_INSTALL_PREFIX to be /usr: the preset `package`.
set(KYGL_MAINTAINER "kygl developers <kygl@example.org>" CACHE STRING
  "Who maintains the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT ${KYGL_MAINTAINER})
set(CPACK_PACKAGE_VENDOR ${KYGL_VENDOR})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL kygl_libraries kygl_development kygl_tools)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)  # on the very same version
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE kygl)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS  # what the tools need of ours
  ${CMAKE_CURRENT_BINARY_DIR}/kygl
  ${CMAKE_CURRENT_BINARY_DIR}/platform/kylib
  ${CMAKE_CURRENT_BINARY_DIR}/platform/sogl)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debianFiles.cmake)

set(about "libkygl gives programs that draw with several OpenGL contexts from several
threads on X11 and GLX what plain OpenGL lacks: contexts under ids of their
own, shader files built into programs once for each context, GL objects that
may be let go of on any thread, bitmap text and textures in many contexts.")

set(CPACK_DEBIAN_KYGL_LIBRARIES_PACKAGE_NAME libkygl${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_KYGL_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_KYGL_LIBRARIES_PACKAGE_SUGGESTS "xfonts-100dpi, xfonts-75dpi, xfonts-base")
# A trigger takes the place of the scripts that cpack writes unless others are named: none are there.
set(CPACK_DEBIAN_KYGL_LIBRARIES_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/cmake/debian/triggers none/postinst none/postrm)
set(CPACK_DEBIAN_KYGL_LIBRARIES_DESCRIPTION
  "shaders and GL objects over many contexts and threads\n${about}")

set(CPACK_COMPONENT_KYGL_DEVELOPMENT_DEPENDS kygl_libraries)
set(CPACK_DEBIAN_KYGL_DEVELOPMENT_PACKAGE_NAME libkygl-dev)
set(CPACK_DEBIAN_KYGL_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_KYGL_DEVELOPMENT_PACKAGE_DEPENDS libgl-dev)
set(CPACK_DEBIAN_KYGL_DEVELOPMENT_PACKAGE_SUGGESTS kygl-tools)  # for kygl_check_shaders
set(CPACK_DEBIAN_KYGL_DEVELOPMENT_DESCRIPTION "development files of libkygl\n${about}
.
This package holds the headers, what CMake and pkg-config need to know, and the
shaders of the examples.")

set(CPACK_COMPONENT_KYGL_TOOLS_DEPENDS kygl_libraries)
set(CPACK_DEBIAN_KYGL_TOOLS_PACKAGE_NAME kygl-tools)
set(CPACK_DEBIAN_KYGL_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_KYGL_TOOLS_DESCRIPTION "command-line programs around libkygl\n${about}
.
This package holds the programs for the desk and for continuous integration.")

include(CPack)
