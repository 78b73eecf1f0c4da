# Debian packages: `cpack` in the build folder makes them of what cmake/Install.cmake lays out.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# A packager gives a real address.
set(CPACK_PACKAGE_CONTACT "imagedecoder maintainers <maintainers@imagedecoder.invalid>" CACHE STRING
    "Maintainer of the packages")
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENTS_ALL "")

# describe_package(component NAME name SECTION section [DEPENDS packages] DESCRIPTION line...)
macro(describe_package component)
    cmake_parse_arguments(arg "" "NAME;SECTION;DEPENDS" "DESCRIPTION" ${ARGN})
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${arg_NAME})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${arg_SECTION})
    set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${arg_DEPENDS}")
    list(JOIN arg_DESCRIPTION "\n" CPACK_DEBIAN_${key}_DESCRIPTION)
endmacro()

if(IMAGEDECODER_JNI)
describe_package(library
    NAME libimagedecoder-jni
    SECTION java
    DESCRIPTION
        "image decoder of a remote-console viewer - JNI library"
        "Decodes the framebuffer updates of remote KVM devices in the encodings ICT"
        "and LBE. A JVM loads the library through the classes of libimagedecoder-java.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
endif()

if(IMAGEDECODER_JNI AND NOT IMAGEDECODER_SANITIZE)
    describe_package(debug
        NAME libimagedecoder-jni-dbgsym
        SECTION debug
        DEPENDS "libimagedecoder-jni (= ${PROJECT_VERSION})"
        DESCRIPTION
            "debug symbols for libimagedecoder-jni"
            "A debugger finds them by the library's build-id.")
endif()

if(IMAGEDECODER_JAVA)
    set(jvm "default-jre-headless (>= 2:1.17) | java17-runtime-headless")
    describe_package(java
        NAME libimagedecoder-java
        SECTION java
        DEPENDS "libimagedecoder-jni (= ${PROJECT_VERSION}), ${jvm}"
        DESCRIPTION
            "image decoder of a remote-console viewer - Java classes"
            "The classes with the native methods of libimagedecoder-jni, an interface on"
            "top of them that is hard to misuse, and the documents.")
endif()

if(IMAGEDECODER_TOOLS)
    describe_package(tools
        NAME imagedecoder-tools
        SECTION utils
        DESCRIPTION
            "tools for recordings of a remote console"
            "Encode pictures as ICT and LBE updates, and decode, list and measure recordings"
            "of them.")
    set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
endif()

include(CPack)
