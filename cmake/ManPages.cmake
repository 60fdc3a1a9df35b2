# Man pages of the programs, compressed, their options as the programs themselves print them.
find_program(GZIP gzip REQUIRED)

function(add_man_page program)
    set(page ${PROJECT_BINARY_DIR}/${program}.1)
    add_custom_command(OUTPUT ${page} ${page}.gz
        COMMAND ${CMAKE_COMMAND}
            "-DCOMMAND=${CMAKE_CROSSCOMPILING_EMULATOR};$<TARGET_FILE:${program}>;${ARGN}"
            -DTEMPLATE=${PROJECT_SOURCE_DIR}/packaging/${program}.1.in
            -DOUTPUT=${page} -DVERSION=${PROJECT_VERSION}
            -P ${PROJECT_SOURCE_DIR}/cmake/WriteManPage.cmake
        COMMAND ${GZIP} -9nkf ${page}
        DEPENDS ${program} ${PROJECT_SOURCE_DIR}/packaging/${program}.1.in
            ${PROJECT_SOURCE_DIR}/cmake/WriteManPage.cmake
        VERBATIM)
    add_custom_target(${program}_man ALL DEPENDS ${page}.gz)
    install(FILES ${page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${program})
endfunction()

add_man_page(fins_panel --help-all)
add_man_page(fins_plc --help)
if(TARGET fins_hmi)
    add_man_page(fins_hmi --help)
endif()
