# Run by CPack when the packages are made: writes their software bill of materials to where they are about to be.
list(GET CPACK_PACKAGE_FILES 0 package)
string(REGEX REPLACE "^.*/[^/]*(_[^_]*_[^_]*)\\.deb$" "${CPACK_DEBIAN_PACKAGE_SOURCE}\\1.spdx.json" document ${package})
execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../packaging/make-sbom ${CPACK_TUL_LINK_MAPS} ${CPACK_PACKAGE_FILES}
                OUTPUT_FILE ${CPACK_PACKAGE_DIRECTORY}/${document} COMMAND_ERROR_IS_FATAL ANY)
