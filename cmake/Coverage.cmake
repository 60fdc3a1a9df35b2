# The preset coverage: counts which lines and branches the tests reach. The driver, which neither throws nor catches, is
# built without exceptions there: so the branches that only an exception of the allocator would take do not exist, and
# every other branch counts.
option(OMRON_FINS_COVERAGE "Count the lines and branches that run" OFF)
if(OMRON_FINS_COVERAGE)
    target_compile_options(omron_fins_warnings INTERFACE --coverage -O0 -fprofile-update=atomic)
    target_link_options(omron_fins_warnings INTERFACE --coverage)
    target_compile_options(omron_fins_objects PRIVATE -fno-exceptions)
endif()
