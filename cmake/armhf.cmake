# Cross-compiles for 32-bit ARM with hard float, which panels are, against the Debian root that scripts/armhf-root makes.
# What is built runs here too, under qemu.
set(armhf_root ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-root)
get_filename_component(armhf_root ${armhf_root} ABSOLUTE)
if(NOT EXISTS ${armhf_root}/usr/lib/arm-linux-gnueabihf)
    message(FATAL_ERROR "${armhf_root} does not exist; run scripts/armhf-root first")
endif()

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_SYSROOT ${armhf_root})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${armhf_root})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
