# What the programs are built with.
find_package(Threads REQUIRED)
find_package(CLI11 REQUIRED)
find_package(fmt REQUIRED)
find_package(ZLIB REQUIRED)

# Headers only: the programs need no library of TOML to run.
find_path(TOMLPLUSPLUS_INCLUDE_DIR toml++/toml.h)
if(NOT TOMLPLUSPLUS_INCLUDE_DIR)
    message(FATAL_ERROR "toml++ is needed for project files; install the package libtomlplusplus-dev")
endif()

find_path(UNISTRING_INCLUDE_DIR unistr.h)
find_library(UNISTRING_LIBRARY unistring)
if(NOT UNISTRING_INCLUDE_DIR OR NOT UNISTRING_LIBRARY)
    message(FATAL_ERROR "libunistring is needed for UTF-8; install the package libunistring-dev")
endif()

# What publishes values to a message broker, and keeps them until they are there.
find_path(MOSQUITTO_INCLUDE_DIR mosquitto.h)
find_library(MOSQUITTO_LIBRARY mosquitto)
if(NOT MOSQUITTO_INCLUDE_DIR OR NOT MOSQUITTO_LIBRARY)
    message(FATAL_ERROR "libmosquitto is needed to publish; install the package libmosquitto-dev")
endif()
find_path(SQLITE_INCLUDE_DIR sqlite3.h)
find_library(SQLITE_LIBRARY sqlite3)
if(NOT SQLITE_INCLUDE_DIR OR NOT SQLITE_LIBRARY)
    message(FATAL_ERROR "SQLite is needed to publish; install the package libsqlite3-dev")
endif()

# What writes and reads the simulator's recordings as captures.
find_path(PCAP_INCLUDE_DIR pcap/pcap.h)
find_library(PCAP_LIBRARY pcap)
if(NOT PCAP_INCLUDE_DIR OR NOT PCAP_LIBRARY)
    message(FATAL_ERROR "libpcap is needed for captures; install the package libpcap-dev")
endif()

# What reads the files that people write; every program that does is made of it.
set(FINS_DOCUMENTS
    ${PROJECT_SOURCE_DIR}/tools/common/descriptor.cpp
    ${PROJECT_SOURCE_DIR}/tools/common/file_reader.cpp
    ${PROJECT_SOURCE_DIR}/tools/common/numbers.cpp
    ${PROJECT_SOURCE_DIR}/tools/common/suggestion.cpp
    ${PROJECT_SOURCE_DIR}/tools/documents/csv_document.cpp
    ${PROJECT_SOURCE_DIR}/tools/documents/csv_reader.cpp
    ${PROJECT_SOURCE_DIR}/tools/documents/problems.cpp
    ${PROJECT_SOURCE_DIR}/tools/documents/symbol_table.cpp
    ${PROJECT_SOURCE_DIR}/tools/documents/table_reader.cpp
    ${PROJECT_SOURCE_DIR}/tools/documents/text_check.cpp
    ${PROJECT_SOURCE_DIR}/tools/documents/toml_document.cpp
    ${PROJECT_SOURCE_DIR}/tools/documents/toml_guard.cpp
    ${PROJECT_SOURCE_DIR}/tools/documents/toml_text.cpp)
