# Settings that every target of the project shares.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")

# Large headers are compiled once where ./test builds. Not by default: clang-tidy trips over what g++
# precompiled.
option(CMAKE_DISABLE_PRECOMPILE_HEADERS "Read large headers anew for every source" ON)

# For the commands that run javac: make-jar.cmake and UseJava.
set_property(GLOBAL PROPERTY RULE_LAUNCH_CUSTOM "\"${CMAKE_CURRENT_LIST_DIR}/utf8-locale\"")

find_package(Threads REQUIRED)

# Warnings and the root include path; linked privately by every target of ours.
add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE -Wall -Wextra -Wshadow -Wconversion)
target_include_directories(project_options INTERFACE ${PROJECT_SOURCE_DIR})

if(IMAGEDECODER_SANITIZE)
    add_compile_options(-fsanitize=${IMAGEDECODER_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer -g)
    add_link_options(-fsanitize=${IMAGEDECODER_SANITIZE})
endif()

include(Hardening)
