# What an installation holds, and where. It can be moved: nothing in it tells where it was installed.
# Each folder installs what is its own, so `cmake --install BUILD/platform/kylib` gives that layer
# alone.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(KYGL_INSTALL_DATADIR ${CMAKE_INSTALL_DATADIR}/kygl)

# Libraries and tools find each other from where they are.
if(NOT DEFINED CMAKE_INSTALL_RPATH)
  file(RELATIVE_PATH bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set(CMAKE_INSTALL_RPATH $ORIGIN $ORIGIN/${bin_to_lib})
endif()

# A library, the headers of its folder that match the patterns behind, to be included as
# <target/...>, and a CMake package of its name, which defines the target kygl::<target>.
function(kygl_install_library target)
  if(NOT KYGL_INSTALL)
    return()
  endif()
  install(TARGETS ${target} EXPORT ${target}Targets
    LIBRARY COMPONENT kygl_libraries NAMELINK_COMPONENT kygl_development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  file(GLOB headers CONFIGURE_DEPENDS ${ARGN})
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${target}
    COMPONENT kygl_development)

  set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${target})
  set(config ${CMAKE_CURRENT_BINARY_DIR}/${target}Config.cmake)
  set(version ${CMAKE_CURRENT_BINARY_DIR}/${target}ConfigVersion.cmake)
  configure_package_config_file(${target}Config.cmake.in ${config}
    INSTALL_DESTINATION ${config_dir} PATH_VARS KYGL_INSTALL_DATADIR CMAKE_INSTALL_BINDIR)
  write_basic_package_version_file(${version} COMPATIBILITY SameMajorVersion)
  install(FILES ${config} ${version} DESTINATION ${config_dir} COMPONENT kygl_development)
  install(EXPORT ${target}Targets NAMESPACE kygl:: DESTINATION ${config_dir}
    COMPONENT kygl_development)
endfunction()

# A tool, and the manual page beside its sources.
function(kygl_install_tool target)
  if(NOT KYGL_INSTALL)
    return()
  endif()
  install(TARGETS ${target} RUNTIME COMPONENT kygl_tools)
  install(FILES ${target}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT kygl_tools)
endfunction()
