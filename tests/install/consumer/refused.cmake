# A package of another major version, or of another word size than BITS, is not taken.
function(expect_refused version bits)
  math(EXPR CMAKE_SIZEOF_VOID_P "${bits} / 8")
  find_package(zxpolicy ${version} QUIET PATHS ${PACKAGE} NO_DEFAULT_PATH)
  if(zxpolicy_FOUND OR NOT zxpolicy_CONSIDERED_CONFIGS)
    message(FATAL_ERROR "version ${version} was taken, or not looked at, for a program of ${bits} bits")
  endif()
endfunction()

math(EXPR other "96 - ${BITS}")
expect_refused(2.0 ${BITS})
expect_refused(1.3 ${BITS})
expect_refused(1.2 ${other})
