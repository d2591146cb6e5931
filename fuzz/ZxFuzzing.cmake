# How everything is compiled for libFuzzer, beyond the checks of ZX_SANITIZE.

# The fuzzer sees which edges the library's code takes.
add_compile_options(-fsanitize=fuzzer-no-link)
# clang links the checks' functions into the program only; shared libraries find them there.
add_link_options(-Wl,-z,undefs)
# The ordinary builds warn; clang does not know all of their options.
target_compile_options(zx_warnings INTERFACE -w)
