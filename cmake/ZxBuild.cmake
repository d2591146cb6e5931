# How everything here is compiled: language levels, warnings as errors, visibility, sanitizers.

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported()
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

# The compiler cache is a convenience: used where it is installed.
find_program(ZX_CCACHE ccache)
if(ZX_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${ZX_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ZX_CCACHE})
endif()

# Source names in log entries and debug data start at the top folder, whatever machine builds.
add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=" "-ffile-prefix-map=${CMAKE_BINARY_DIR}=build")
add_compile_definitions(_FILE_OFFSET_BITS=64)
add_link_options(-Wl,--no-undefined -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)

if(ZX_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
else()
  add_compile_options(-fstack-protector-strong -fstack-clash-protection
    "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
endif()

# Warnings of our own code; third-party sources are built without them.
add_library(zx_warnings INTERFACE)
target_compile_options(zx_warnings INTERFACE -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion
  -Wcast-align=strict -Wformat=2 -Wundef "$<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Woverloaded-virtual;-Wold-style-cast>")
