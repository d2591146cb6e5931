# Run by cpack on the packages that it has made: mends what there is no setting for.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES "/libzxpolicy1_[^/]*$")
    continue()
  endif()
  set(tree ${package}.tree)
  file(REMOVE_RECURSE ${tree})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
  # The trigger has the loader's cache renewed; cpack adds scripts that would do the same once more.
  file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
  # The packages of both word sizes may be installed at once.
  file(READ ${tree}/DEBIAN/control control)
  string(REGEX REPLACE "\nSection:" "\nMulti-Arch: same\nSection:" control "${control}")
  file(WRITE ${tree}/DEBIAN/control "${control}")
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${tree} ${package} COMMAND_ERROR_IS_FATAL ANY
    OUTPUT_QUIET)
  file(REMOVE_RECURSE ${tree})
endforeach()
