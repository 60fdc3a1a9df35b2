# Installation, and a Debian package of it.
install(TARGETS omron_fins_ethernet LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES src/omron_fins_ethernet.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(OMRON_FINS_TOOLS)
    install(TARGETS fins_panel fins_plc RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME omron-fins-ethernet)
set(CPACK_PACKAGE_CONTACT "maintainers@users.noreply.c-seed-e84c4a63.example")
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
include(CPack)
