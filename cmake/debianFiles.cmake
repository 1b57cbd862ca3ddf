# Run by cpack before it packs: adds what Debian wants in every package and other installations do
# not need, compresses manual pages, and opens folders to all whatever the umask.
if(NOT CPACK_GENERATOR STREQUAL DEB)
  return()
endif()
set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # of SOURCE_DATE_EPOCH where that is set

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} COMPONENT)
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
  set(doc ${share}/doc/${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/copyright ${doc}/copyright
    COPYONLY NO_SOURCE_PERMISSIONS)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${doc}/changelog.Debian
    @ONLY NO_SOURCE_PERMISSIONS)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/../CHANGELOG.md ${doc}/changelog
    COPYONLY NO_SOURCE_PERMISSIONS)
  file(GLOB pages ${share}/man/man*/*.?)
  execute_process(COMMAND gzip -9nf ${doc}/changelog.Debian ${doc}/changelog ${pages}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
execute_process(COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -type d -exec chmod 755 {} +
  COMMAND_ERROR_IS_FATAL ANY)
