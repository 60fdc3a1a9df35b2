# Installation, and Debian packages of it: the driver with its header, the runtime library, what others need to build with
# that, the panel program, the graphical panel where it is built, the simulator.
install(TARGETS omron_fins_ethernet LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT driver)
install(FILES src/omron_fins_ethernet.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT driver)
install(FILES packaging/lintian-overrides RENAME omron-fins-ethernet
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT driver)
set(CPACK_COMPONENTS_ALL driver)

if(OMRON_FINS_TOOLS)
    set(programs fins_panel fins_plc)
    if(TARGET fins_hmi)
        list(APPEND programs fins_hmi)
    endif()
    list(APPEND CPACK_COMPONENTS_ALL runtime runtime_dev ${programs})
    include(cmake/RuntimeLibrary.cmake)
    foreach(program ${programs})
        install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${program})
        install(FILES packaging/completion.bash RENAME ${program}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT ${program})
    endforeach()
    install(FILES packaging/fins-publish@.service DESTINATION lib/systemd/system COMPONENT fins_panel)
    install(DIRECTORY share/fins_plc DESTINATION ${CMAKE_INSTALL_DATADIR} COMPONENT fins_plc)
    include(cmake/ManPages.cmake)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME omron-fins-ethernet)
set(CPACK_PACKAGE_CONTACT "maintainers <maintainers@users.noreply.c-seed-e84c4a63.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # the project's would stand above each description, as its synopsis

set(CPACK_DEBIAN_DRIVER_PACKAGE_NAME omron-fins-ethernet)
set(CPACK_DEBIAN_DRIVER_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DRIVER_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(qt_headers_5 qtbase5-dev) # which the driver's header includes
set(qt_headers_6 qt6-base-dev)
set(CPACK_DEBIAN_DRIVER_PACKAGE_SUGGESTS ${qt_headers_${OMRON_FINS_QT}})
set(CPACK_COMPONENT_DRIVER_DESCRIPTION "FINS/TCP driver for operator panel runtimes
A shared library that a panel runtime loads by name. It plans what to poll,
builds requests and judges replies; the runtime owns the connection.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libfins-runtime${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "omron-fins-ethernet (= ${PROJECT_VERSION})")
set(shlibs ${PROJECT_BINARY_DIR}/shlibs) # what a package of a program that links the library depends on
file(WRITE ${shlibs} "libfins_runtime ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME}\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers ${shlibs})
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "panel runtime for Omron PLCs, as a library
It keeps the links to PLCs alive, tells programs of their values and how far
these can be trusted, and what became of each write.")
set(CPACK_DEBIAN_RUNTIME_DEV_PACKAGE_NAME libfins-runtime-dev)
set(CPACK_DEBIAN_RUNTIME_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_RUNTIME_DEV_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_RUNTIME_DEV_DESCRIPTION "panel runtime for Omron PLCs, to build with
The headers of the runtime library, its CMake package and its pkg-config file.")
set(CPACK_DEBIAN_FINS_PANEL_PACKAGE_NAME fins-panel)
set(CPACK_DEBIAN_FINS_PANEL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_FINS_PANEL_PACKAGE_DEPENDS "omron-fins-ethernet (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_FINS_PANEL_DESCRIPTION "panel runtime on the command line for Omron PLCs
It watches, reads and writes the memory of a PLC through the driver, moves
recipes, and tells what is wrong with a connection.")
set(CPACK_DEBIAN_FINS_HMI_PACKAGE_NAME fins-hmi)
set(CPACK_DEBIAN_FINS_HMI_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_FINS_HMI_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION}), omron-fins-ethernet (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_FINS_HMI_DESCRIPTION "graphical operator panel for Omron PLCs
It shows the values of PLCs on screens that a project file describes, with
their quality, alarms, trends and recipes, and writes what is confirmed.")
set(CPACK_DEBIAN_FINS_PLC_PACKAGE_NAME fins-plc)
set(CPACK_DEBIAN_FINS_PLC_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_FINS_PLC_DESCRIPTION "simulator of an Omron PLC that speaks FINS/TCP
It answers like a PLC of the CS/CJ series, with a small plant that moves and
faults that can be switched on, to try a panel with no PLC on the desk.")

# Every package has its copyright and changelog, compressed as Debian wants them.
find_program(GZIP gzip)
if(GZIP)
    set(changelog ${PROJECT_BINARY_DIR}/changelog.gz)
    execute_process(COMMAND ${GZIP} -9nc ${PROJECT_SOURCE_DIR}/packaging/changelog OUTPUT_FILE ${changelog})
    foreach(component ${CPACK_COMPONENTS_ALL})
        string(TOUPPER ${component} upper)
        set(folder ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
        install(FILES packaging/copyright ${changelog} DESTINATION ${folder} COMPONENT ${component})
    endforeach()
endif()

if(TARGET fins_hmi)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/runtime) # of the library that it links
    install(FILES packaging/fins_hmi.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT fins_hmi)
    install(FILES packaging/fins_hmi.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT fins_hmi)
    install(FILES docs/examples/tank.toml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_FINS_HMI_PACKAGE_NAME}/examples COMPONENT fins_hmi)
endif()

include(CPack)
