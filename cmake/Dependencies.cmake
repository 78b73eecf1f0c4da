# What the build needs beside the compiler and binutils. All of it is looked for before anything else
# is configured, so that one message lists everything that is missing.

set(missing "")
set(missing_debian_packages "")

# need(name FOR part... DEBIAN package... FIND argument...): looks for a package with the arguments of
# find_package, if one of the parts is built: TOOLS stands for IMAGEDECODER_TOOLS.
macro(need name)
    cmake_parse_arguments(need "" "" "FOR;DEBIAN;FIND" ${ARGN})
    set(need_switches "")
    foreach(part IN LISTS need_FOR)
        if(IMAGEDECODER_${part})
            string(APPEND need_switches " -D IMAGEDECODER_${part}=OFF")
        endif()
    endforeach()
    if(need_switches)
        find_package(${need_FIND})
        list(GET need_FIND 0 need_package)
        if(NOT ${need_package}_FOUND)
            list(JOIN need_DEBIAN " " need_DEBIAN)
            string(APPEND missing
                "  ${name}: Debian package ${need_DEBIAN}, or do without:${need_switches}\n")
            string(APPEND missing_debian_packages " ${need_DEBIAN}")
        endif()
    endif()
endmacro()

# A JDK that is installed but not the distribution's default one is found through its compiler.
if(NOT JAVA_HOME AND NOT DEFINED ENV{JAVA_HOME})
    find_program(Java_JAVAC_EXECUTABLE javac)
    if(Java_JAVAC_EXECUTABLE)
        file(REAL_PATH ${Java_JAVAC_EXECUTABLE} javac)
        cmake_path(GET javac PARENT_PATH javac_folder)
        cmake_path(GET javac_folder PARENT_PATH JAVA_HOME)
    endif()
endif()

need("JDK headers (jni.h)" FOR JNI DEBIAN openjdk-17-jdk-headless FIND JNI COMPONENTS JVM)
need("JDK 17 or later" FOR JAVA DEBIAN openjdk-17-jdk-headless
     FIND Java 17 COMPONENTS Development)
need("libpng" FOR TOOLS DEBIAN libpng-dev FIND PNG)
need("zlib" FOR TOOLS TESTS DEBIAN zlib1g-dev FIND ZLIB)
need("CLI11" FOR TOOLS DEBIAN libcli11-dev FIND CLI11 QUIET)
need("JSON for Modern C++" FOR TOOLS DEBIAN nlohmann-json3-dev FIND nlohmann_json QUIET)
need("GoogleTest with GoogleMock" FOR TESTS DEBIAN libgtest-dev libgmock-dev FIND GTest)
need("libjpeg" FOR TESTS DEBIAN libjpeg-dev FIND JPEG)
need("Python 3" FOR TESTS DEBIAN python3 FIND Python3 COMPONENTS Interpreter)
need("Google Benchmark" FOR BENCH DEBIAN libbenchmark-dev FIND benchmark QUIET)

if(missing)
    separate_arguments(missing_debian_packages)
    list(REMOVE_DUPLICATES missing_debian_packages)
    list(JOIN missing_debian_packages " " missing_debian_packages)
    message(FATAL_ERROR
        "Not found:\n${missing}"
        "On Debian: apt-get install ${missing_debian_packages}\n"
        "docs/packaging.md lists what each part needs.")
endif()
