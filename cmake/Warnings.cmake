# The target omron_fins_warnings: the warnings that every target of the project is built with.
add_library(omron_fins_warnings INTERFACE)
target_compile_options(omron_fins_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast
    $<$<BOOL:${OMRON_FINS_WERROR}>:-Werror>)

if(OMRON_FINS_SANITIZE)
    target_compile_options(omron_fins_warnings INTERFACE
        -fsanitize=${OMRON_FINS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(omron_fins_warnings INTERFACE -fsanitize=${OMRON_FINS_SANITIZE})
endif()

# gcc's ThreadSanitizer does not see the fences around Asio's handlers, and warns of each. What one thread hands to
# another goes through a mutex of Asio, which it does see.
if(OMRON_FINS_SANITIZE MATCHES thread AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(omron_fins_warnings INTERFACE -Wno-tsan)
endif()
