# The target omron_fins_whole_program: a release is optimised across its source files. The objects hold ordinary code as
# well, so that the tests, which are made of the same ones, link quickly.
add_library(omron_fins_whole_program INTERFACE)
set(OMRON_FINS_WHOLE_PROGRAM_LINK "")
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_BUILD_TYPE STREQUAL Release)
    target_compile_options(omron_fins_whole_program INTERFACE -flto=auto -ffat-lto-objects)
    set(OMRON_FINS_WHOLE_PROGRAM_LINK -flto=auto)
endif()
