# Three Debian packages, one for each component of the install rules; packaging/make-packages makes them.

# --- what the Debian policy wants in every package, and the manual pages ---

# Installs what a command prints, compressed. Neither time nor folder of the build gets into it.
function(tul_install_compressed name destination component)
  set(compressed ${PROJECT_BINARY_DIR}/packaging/${component}/${name}.gz)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/packaging/${component})
  execute_process(COMMAND ${ARGN} COMMAND gzip -9n OUTPUT_FILE ${compressed} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${compressed} DESTINATION ${destination} COMPONENT ${component})
endfunction()

foreach(manual tul-node.1 tul-tour.1 vorma.8)
  string(REGEX REPLACE ".*\\." man section ${manual})
  set(source ${PROJECT_SOURCE_DIR}/packaging/man/${manual})
  tul_install_compressed(${manual} ${CMAKE_INSTALL_MANDIR}/${section} node cat ${source})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
endforeach()

set(maintainer "The libtul_sshd_manager authors <authors@example.invalid>")
# SOURCE_DATE_EPOCH decides; without it the time of configuring.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)

function(tul_package component package)
  set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package})
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright DESTINATION ${documents} COMPONENT ${component})
  tul_install_compressed(changelog ${documents} ${component}
    ${PROJECT_SOURCE_DIR}/packaging/make-changelog ${package} ${PROJECT_VERSION} ${maintainer} ${date})
  set(overrides ${PROJECT_SOURCE_DIR}/packaging/lintian/${package})
  if(EXISTS ${overrides})
    install(FILES ${overrides} DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides COMPONENT ${component})
  endif()
  string(TOUPPER ${component} COMPONENT)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${package} PARENT_SCOPE)
endfunction()

tul_package(manager libtul-sshd-manager)
tul_package(platform tul-platform-dev)
tul_package(node tul-node)

# --- what they are, and what they need ---

set(CPACK_DEBIAN_MANAGER_DESCRIPTION "keeps a node's SSH daemon in line with its management model
A component library that a management framework loads. It owns the managed
objects CliSsh and NetconfSsh, and changes sshd through an adapter script.")
set(CPACK_DEBIAN_MANAGER_PACKAGE_SECTION net)
# On a real node the platform's own package has this name; here it is tul-platform-dev.
set(CPACK_DEBIAN_MANAGER_PACKAGE_DEPENDS "libtul-common1")

set(CPACK_DEBIAN_PLATFORM_DESCRIPTION "what a component of the management framework is built against
Headers of the framework's interfaces and the platform's common library, in
the development edition, with a CMake package and a pkg-config file.")
set(CPACK_DEBIAN_PLATFORM_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PLATFORM_PACKAGE_DEPENDS "libpoco-dev")
set(CPACK_DEBIAN_PLATFORM_PACKAGE_PROVIDES "libtul-common1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PLATFORM_PACKAGE_CONFLICTS "libtul-common1") # that of a real platform has the same files
set(shlibs ${PROJECT_BINARY_DIR}/packaging/platform/shlibs)
set(triggers ${PROJECT_BINARY_DIR}/packaging/platform/triggers)
file(WRITE ${shlibs} "libtul_common ${PROJECT_VERSION_MAJOR} libtul-common1\n")
file(WRITE ${triggers} "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_PLATFORM_PACKAGE_CONTROL_EXTRA ${shlibs} ${triggers})

set(CPACK_DEBIAN_NODE_DESCRIPTION "management framework of one development node
The framework in one process, with a prompt, the reference adapter for OpenSSH
and a tour that shows and proves what the component libtul-sshd-manager does.")
set(CPACK_DEBIAN_NODE_PACKAGE_SECTION net)
# The adapter drives sshd; the tour is its client and looks at its sockets. Nothing here touches the machine's own sshd.
string(CONCAT CPACK_DEBIAN_NODE_PACKAGE_DEPENDS
  "tul-platform-dev (= ${PROJECT_VERSION}), libtul-sshd-manager (= ${PROJECT_VERSION}), "
  "openssh-server, openssh-client, iproute2")

# Dependencies on libraries are what dpkg-shlibdeps says. Ours is not in a package yet; of another architecture all are
# in the sysroot, whose own package database make-packages names.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
if(CMAKE_CROSSCOMPILING)
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${CMAKE_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE} ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL manager platform node)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${maintainer})
set(CPACK_DEBIAN_PACKAGE_SOURCE libtul-sshd-manager)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # else it would stand above each package's own
set(CPACK_PACKAGE_VENDOR "The libtul_sshd_manager authors")
set(CPACK_STRIP_FILES ON)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/Sbom.cmake)

# Which libraries are inside of what is shipped only the linker knows; the bill of materials has it from there.
set(CPACK_TUL_LINK_MAPS ${PROJECT_BINARY_DIR}/packaging/link-maps)
file(MAKE_DIRECTORY ${CPACK_TUL_LINK_MAPS})
foreach(target tul_sshd_manager tul_common tul-node dscp-gate vorma)
  target_link_options(${target} PRIVATE -Wl,-Map=${CPACK_TUL_LINK_MAPS}/$<TARGET_FILE_NAME:${target}>)
endforeach()
include(CPack)
