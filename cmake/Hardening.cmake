# What a distributor asks of everything that is shipped: a smashed stack ends the process, and
# nothing that is mapped executable or read-only can be made writable. A sanitizer has checks of its
# own, which these would hide, and wants its own runtime.
#
# No -fcf-protection=branch: indirect calls into this code come from a JVM that has no landing pads
# either.
if(IMAGEDECODER_SANITIZE)
    return()
endif()

target_compile_options(project_options INTERFACE
    -fstack-protector-strong
    -fstack-clash-protection
    -fcf-protection=return)
# Fortified functions need the optimiser. A packager's own level stands.
if(NOT CMAKE_CXX_FLAGS MATCHES _FORTIFY_SOURCE)
    target_compile_options(project_options INTERFACE
        $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
endif()

target_link_options(project_options INTERFACE
    LINKER:-z,relro
    LINKER:-z,now
    LINKER:-z,noexecstack
    LINKER:-z,text
    # The compiler's start files carry no such note, and one object without it drops it for all.
    LINKER:-z,shstk
    LINKER:--as-needed
    LINKER:--build-id=sha1)
include(CheckPIESupported)
check_pie_supported()
