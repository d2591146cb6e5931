# Finds the third-party libraries in the word size of this build.
#
# 32-bit development packages cannot always be installed beside the native ones, while the run-time
# packages can. So headers come from the native packages, and the linker is handed the versioned
# shared object of the wanted word size.

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(ZX_LIBRARY_DIRS /usr/lib/i386-linux-gnu /lib/i386-linux-gnu /usr/lib32 /usr/lib)
else()
  set(ZX_LIBRARY_DIRS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE} /usr/lib64 /usr/lib)
endif()

# zx_import_library(TARGET HEADER NAME...): an imported target for the first of the library file names.
function(zx_import_library target header)
  string(MAKE_C_IDENTIFIER ${target} id)
  find_path(${id}_HEADER ${header} REQUIRED)
  find_library(${id}_LIBRARY NAMES ${ARGN} PATHS ${ZX_LIBRARY_DIRS} NO_DEFAULT_PATH REQUIRED)
  add_library(${target} UNKNOWN IMPORTED GLOBAL)
  set_target_properties(${target} PROPERTIES IMPORTED_LOCATION ${${id}_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${${id}_HEADER})
endfunction()

find_package(Threads REQUIRED)
zx_import_library(zx::sqlite sqlite3.h libsqlite3.so.0)
zx_import_library(zx::sodium sodium.h libsodium.so.23 libsodium.so.26)
zx_import_library(zx::icu unicode/ucnv.h libicuuc.so.72 libicuuc.so.76)
if(ZX_BUILD_TOOL OR ZX_BUILD_TESTS)
  zx_import_library(zx::yaml yaml-cpp/yaml.h libyaml-cpp.so.0.7 libyaml-cpp.so.0.8)
endif()
if(ZX_BUILD_BENCH)
  zx_import_library(zx::benchmark benchmark/benchmark.h libbenchmark.so.1 libbenchmark.so.1debian)
endif()
