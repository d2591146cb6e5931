# Run by cpack on what it is about to pack: makes Debian packages of the installed components.

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(usr ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  set(doc ${usr}/share/doc/${package})

  # Documentation lies in a folder of the package's own name.
  if(EXISTS ${usr}/share/doc/zxpolicy AND NOT package STREQUAL "zxpolicy")
    file(RENAME ${usr}/share/doc/zxpolicy ${doc})
  endif()
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${doc}/copyright COPYONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog ${doc}/changelog.Debian COPYONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/lintian-overrides ${usr}/share/lintian/overrides/${package} COPYONLY)
  file(GLOB_RECURSE texts ${usr}/share/man/*.[1-9])
  execute_process(COMMAND gzip -n9 ${texts} ${doc}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)

  # The system's loader and the system's tools find everything where it is.
  file(GLOB_RECURSE files LIST_DIRECTORIES false ${usr}/bin/* ${usr}/lib/*.so.*)
  foreach(file IN LISTS files)
    if(NOT IS_SYMLINK ${file})
      file(RPATH_REMOVE FILE ${file})
    endif()
  endforeach()
  file(GLOB_RECURSE pkgconfig ${usr}/lib/*.pc)
  foreach(file IN LISTS pkgconfig)
    file(READ ${file} text)
    string(REGEX REPLACE "^prefix=[^\n]*" "prefix=/usr" text "${text}")
    file(WRITE ${file} "${text}")
  endforeach()
endforeach()
