# cpack: Debian packages, one for each component of the install. For the 32-bit word size there is no development
# package: headers and the reference are the same as in the 64-bit one.

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
  set(CPACK_COMPONENTS_ALL runtime tool)
else()
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
  set(CPACK_COMPONENTS_ALL runtime development tool)
endif()
if(NOT ZX_BUILD_TOOL)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL tool)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "libzxpolicy developers <zxpolicy@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
  WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE libzxpolicy)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/stage.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/repack.cmake)
set(version "${PROJECT_VERSION}-1")

# dpkg-shlibdeps finds the packages of the libraries that are used, each in the word size of who uses it; ours are not
# installed yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzxpolicy1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "mail-filter policy library
libzxpolicy keeps the policy of a mail filter, a tree of rules with conditions
on sender and receiver, lists of addresses and tasks, in a key/value store,
and decides which rule applies to each receiver of a mail and which tasks
that rule asks for.

This package holds the library, and the store and the log that it uses where
the host brings none of its own.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_LIST_DIR}/debian/shlibs;${CMAKE_CURRENT_LIST_DIR}/debian/triggers")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzxpolicy-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libzxpolicy1 (= ${version})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "mail-filter policy library (development)
libzxpolicy keeps the policy of a mail filter in a key/value store and decides
by it.

This package holds what building programs with it takes: headers for C and
C++, files for pkg-config and CMake, the reference, and examples.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME zxpolicy)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION mail)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "libzxpolicy1 (= ${version})")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "command line of the mail-filter policy library
zxpolicy makes a store hold the policy that is written in a YAML file, prints
such a file, decides on mails, and works on address lists. It uses
libzxpolicy, as mail filters do.")

include(CPack)
