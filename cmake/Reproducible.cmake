# The target omron_fins_reproducible: the same source gives the same bytes, wherever source and build folder lie.
add_library(omron_fins_reproducible INTERFACE)
target_compile_options(omron_fins_reproducible INTERFACE
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
    -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
