# cmake --install: three components. "runtime" is the libraries, "tool" the command line, and "development" all that
# building against the libraries takes, with the reference and the examples. Nothing installed names the folders that
# it was built from or in, and the whole prefix may be moved.

# Where the compiler knows a folder of its own for this word size (lib/i386-linux-gnu), the libraries go there, so that
# both word sizes can be installed into one prefix.
if(CMAKE_LIBRARY_ARCHITECTURE AND NOT DEFINED CMAKE_INSTALL_LIBDIR)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Where libraries go, below the prefix")
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# What was installed finds its libraries beside it. Packages for /usr go without (cmake/debian/stage.cmake).
file(RELATIVE_PATH bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(zxpolicy PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS zxpolicy zxregistry zxbase EXPORT zxpolicyTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(ZX_BUILD_TOOL)
  set_target_properties(zxpolicy_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
  install(TARGETS zxpolicy_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  install(FILES ${PROJECT_SOURCE_DIR}/tools/zxpolicy/completion/zxpolicy.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME zxpolicy COMPONENT tool)
  foreach(section 1 5)
    file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.${section})
    install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT tool)
  endforeach()
endif()

# Headers: the flat interface and the host's contracts as they are, the classes below zxpolicy/.
install(FILES ${PROJECT_SOURCE_DIR}/include/zxpolicy.h ${PROJECT_SOURCE_DIR}/include/zxpolicy_explain.h
  ${PROJECT_SOURCE_DIR}/platform/include/zxregistry.h ${PROJECT_SOURCE_DIR}/platform/include/zxbase.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(CODE "
  set(ZX_SOURCES \"${PROJECT_SOURCE_DIR}/src\")
  set(ZX_STAGE \"${PROJECT_BINARY_DIR}/class_headers\")
  set(ZX_DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_INCLUDEDIR}/zxpolicy\")" COMPONENT development)
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/ZxClassHeaders.cmake COMPONENT development)

# For pkg-config and for find_package.
set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zxpolicy)
file(RELATIVE_PATH ZX_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" ZX_PC_TO_PREFIX "${ZX_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/zxpolicy.pc.in ${PROJECT_BINARY_DIR}/zxpolicy.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zxpolicy.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zxpolicyConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/zxpolicyConfig.cmake ${PROJECT_BINARY_DIR}/zxpolicyConfigVersion.cmake
  DESTINATION ${config_dir} COMPONENT development)
install(EXPORT zxpolicyTargets NAMESPACE zxpolicy:: DESTINATION ${config_dir} COMPONENT development)

# The reference, where it has been made, and the examples.
install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/man/man3 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT development OPTIONAL
  FILES_MATCHING PATTERN "*.3")
install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development OPTIONAL)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
