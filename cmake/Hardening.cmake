# The target omron_fins_hardening: the distribution's hardening for what is installed.
add_library(omron_fins_hardening INTERFACE)
target_compile_options(omron_fins_hardening INTERFACE -fstack-protector-strong -Wformat -Werror=format-security)
target_link_options(omron_fins_hardening INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)

# Fortified string functions need optimisation, and hide from sanitizers what they look for.
if(NOT OMRON_FINS_SANITIZE)
    target_compile_definitions(omron_fins_hardening INTERFACE
        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=2>)
endif()
