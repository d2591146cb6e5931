# Installs the class headers of ZX_SOURCES into ZX_DESTINATION, by way of ZX_STAGE: those that export something, and
# those that they include. In the sources they include each other as "store/result.h"; installed they say
# "zxpolicy/store/result.h", so that one include path serves all and no name as common as "store" is taken.

cmake_policy(VERSION 3.25)
file(GLOB_RECURSE headers RELATIVE ${ZX_SOURCES} ${ZX_SOURCES}/*.h)
set(wanted "")
foreach(header IN LISTS headers)
  file(READ ${ZX_SOURCES}/${header} text)
  if(text MATCHES "(class|struct) ZXPOL_API")
    list(APPEND wanted ${header})
  endif()
endforeach()

file(REMOVE_RECURSE ${ZX_STAGE})
set(done "")
while(wanted)
  list(POP_FRONT wanted header)
  if(header IN_LIST done)
    continue()
  endif()
  list(APPEND done ${header})
  file(READ ${ZX_SOURCES}/${header} text)
  string(REGEX MATCHALL "#include \"[a-z_0-9]+/[a-z_0-9]+\\.h\"" includes "${text}")
  list(TRANSFORM includes REPLACE "#include \"(.*)\"" "\\1")
  list(APPEND wanted ${includes})
  string(REGEX REPLACE "(#include \")([a-z_0-9]+/[a-z_0-9]+\\.h\")" "\\1zxpolicy/\\2" text "${text}")
  file(WRITE ${ZX_STAGE}/${header} "${text}")
endwhile()

file(INSTALL DESTINATION ${ZX_DESTINATION} TYPE DIRECTORY FILES ${ZX_STAGE}/)
