# What the programs are built with.
find_package(Threads REQUIRED)
find_package(CLI11 REQUIRED)

# Headers only: the programs need no library of TOML to run.
find_path(TOMLPLUSPLUS_INCLUDE_DIR toml++/toml.h)
if(NOT TOMLPLUSPLUS_INCLUDE_DIR)
    message(FATAL_ERROR "toml++ is needed for project files; install the package libtomlplusplus-dev")
endif()
