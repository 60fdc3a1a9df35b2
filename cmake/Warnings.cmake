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

# gcc's ThreadSanitizer does not see the fences by which Asio hands work from thread to thread, and says so for each.
# No thread of the programs relies on them: they use Asio from one thread.
if(OMRON_FINS_SANITIZE MATCHES thread AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(omron_fins_warnings INTERFACE -Wno-tsan)
endif()
