# What `cmake --install` installs, and where. debian/rules makes one package of each component, except
# of debug: debhelper splits the symbols of all programs itself.
#
# Nothing is built by an installation: build first.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

# JVMs of Debian look in lib/MULTIARCH/jni. CMake would choose MULTIARCH for the prefix /usr alone,
# too late for a package that is made of a build for /usr/local. A packager's own folder stands: an
# untyped relative one must not be set again, which would make it absolute.
if(CMAKE_LIBRARY_ARCHITECTURE AND EXISTS /etc/debian_version AND NOT DEFINED CMAKE_INSTALL_LIBDIR)
    set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Object code libraries")
endif()
include(GNUInstallDirs)

if(IMAGEDECODER_JNI)
    # As files, not as targets: nothing is left to strip or to relink, and the bytes stay as tested.
    install(FILES $<TARGET_FILE:imagedecoder> DESTINATION ${CMAKE_INSTALL_LIBDIR}/jni
            COMPONENT library)
    if(IMAGEDECODER_SPLIT_SYMBOLS AND NOT IMAGEDECODER_SANITIZE)
        install_debug_symbols(imagedecoder COMPONENT debug)
    endif()
endif()

if(TARGET imagedecoder_jar)
    get_target_property(jar imagedecoder_jar JAR_FILE)
    set(versioned_jar imagedecoder-${PROJECT_VERSION}.jar)
    set(plain_jar ${PROJECT_BINARY_DIR}/install/imagedecoder.jar)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/install)
    file(CREATE_LINK ${versioned_jar} ${plain_jar} SYMBOLIC)
    install(FILES ${jar} DESTINATION ${CMAKE_INSTALL_DATADIR}/java RENAME ${versioned_jar}
            COMPONENT java)
    install(FILES ${plain_jar} DESTINATION ${CMAKE_INSTALL_DATADIR}/java COMPONENT java)
    foreach(target sources_jar javadoc)
        get_target_property(jar ${target} JAR_FILE)
        install(FILES ${jar} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
    endforeach()
endif()

if(TARGET rctool)
    install(TARGETS rctool RUNTIME COMPONENT tools)
    install(FILES ${PROJECT_BINARY_DIR}/tools/rctool.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
            COMPONENT tools)
    # Where each shell looks for the completions of a package.
    foreach(completion bash:bash-completion/completions/rctool zsh:zsh/vendor-completions/_rctool
            fish:fish/vendor_completions.d/rctool.fish)
        string(REGEX MATCH "^([a-z]+):(.+)/(.+)$" match ${completion})
        install(FILES ${PROJECT_BINARY_DIR}/tools/rctool.${CMAKE_MATCH_1}
                DESTINATION ${CMAKE_INSTALL_DATADIR}/${CMAKE_MATCH_2} RENAME ${CMAKE_MATCH_3}
                COMPONENT tools)
    endforeach()
endif()

# Pages for a viewer's developer, a packager and a codec engineer, and what they link to.
install(FILES README.md SECURITY.md CHANGELOG.md CONTRIBUTING.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY java/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} USE_SOURCE_PERMISSIONS
        COMPONENT doc)
