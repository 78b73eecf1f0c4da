# split_debug_symbols(target): moves the debug symbols of a shared object into a file beside it, which
# has its name and ".debug". A debugger finds them there by name, or by build-id where
# install_debug_symbols(target COMPONENT component) installs them.

find_program(BINUTILS_OBJCOPY objcopy REQUIRED)
find_program(BINUTILS_READELF readelf REQUIRED)

function(split_debug_symbols target)
    set(file $<TARGET_FILE:${target}>)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${BINUTILS_OBJCOPY} --only-keep-debug --compress-debug-sections
                ${file} ${file}.debug
        COMMAND ${BINUTILS_OBJCOPY} --strip-unneeded --remove-section=.comment
                --add-gnu-debuglink=${file}.debug ${file}
        BYPRODUCTS ${PROJECT_BINARY_DIR}/lib${target}.so.debug
        COMMENT "Splitting the debug symbols off lib${target}.so"
        VERBATIM)
endfunction()

function(install_debug_symbols target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "COMPONENT" "")
    # The build-id is known when the file is.
    install(CODE "
        execute_process(COMMAND \"${BINUTILS_READELF}\" --notes \"$<TARGET_FILE:${target}>\"
                        OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
        string(REGEX MATCH \"Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)\" found \"\${notes}\")
        if(NOT found)
            message(FATAL_ERROR \"$<TARGET_FILE:${target}> has no build-id\")
        endif()
        file(INSTALL \"$<TARGET_FILE:${target}>.debug\"
             DESTINATION \"\${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id/\${CMAKE_MATCH_1}\"
             RENAME \"\${CMAKE_MATCH_2}.debug\")"
        COMPONENT ${arg_COMPONENT})
endfunction()
