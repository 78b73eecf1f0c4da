# make_distributable(target FROM part...): a shared object that one build serves every distribution
# with. It brings its own C++ library, and its bytes do not depend on the folders it was built in.

include(SplitDebugSymbols)

function(make_distributable target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FROM")

    # The C++ library as hidden code: the viewer's process may hold another one. libgcc_s stays
    # shared, since exceptions unwind through it and a static one needs a new glibc.
    target_link_options(${target} PRIVATE
        -static-libstdc++
        LINKER:--gc-sections
        LINKER:--no-undefined
        # Virtual tables refer to it weakly, which alone does not fetch it from an archive.
        LINKER:--undefined=__cxa_pure_virtual)

    foreach(part ${target} ${arg_FROM})
        target_compile_options(${part} PRIVATE -g ${folder_independence})
    endforeach()
    if(IMAGEDECODER_SPLIT_SYMBOLS)
        split_debug_symbols(${target})
    endif()
endfunction()

# Both folders become "." in debug symbols and __FILE__. Of several maps that fit, g++ takes the last
# and clang 14 the first in alphabetical order, so clang is told the working folder by itself.
set(folder_independence -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    list(APPEND folder_independence -ffile-compilation-dir=.)
else()
    list(APPEND folder_independence -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
endif()
