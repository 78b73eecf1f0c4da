# The shared object as it is distributed. A debug build is not, and a sanitizer's has other needs.
if(IMAGEDECODER_SANITIZE OR CMAKE_BUILD_TYPE STREQUAL Debug OR NOT IMAGEDECODER_JNI)
    return()
endif()

find_program(BINUTILS_READELF readelf REQUIRED)

set(script ${CMAKE_CURRENT_SOURCE_DIR}/shared_object.py)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${script})
execute_process(COMMAND ${python} ${script} OUTPUT_VARIABLE properties
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" properties "${properties}")
foreach(property IN LISTS properties)
    add_test(NAME checks.SharedObject.${property}
             COMMAND ${python} ${script} --readelf ${BINUTILS_READELF} --objdump ${BINUTILS_OBJDUMP}
                     ${property} $<TARGET_FILE:imagedecoder>)
endforeach()

set(script ${CMAKE_CURRENT_SOURCE_DIR}/configuration.py)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${script})
execute_process(COMMAND ${python} ${script} --list OUTPUT_VARIABLE configurations
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" configurations "${configurations}")
foreach(configuration IN LISTS configurations)
    add_test(NAME checks.Configuration.${configuration}
             COMMAND ${python} ${script} --source ${PROJECT_SOURCE_DIR} --cmake ${CMAKE_COMMAND}
                     --work ${CMAKE_CURRENT_BINARY_DIR}/${configuration}
                     --object $<TARGET_FILE:imagedecoder> ${configuration})
endforeach()

# A second build, one step at a time beside the other tests.
set(targets --target imagedecoder)
set(files --file $<TARGET_FILE:imagedecoder> --file $<TARGET_FILE:imagedecoder>.debug)
if(IMAGEDECODER_JAVA)
    foreach(target imagedecoder_jar sources_jar javadoc)
        get_target_property(jar ${target} JAR_FILE)
        list(APPEND targets --target ${target})
        list(APPEND files --file ${jar})
    endforeach()
endif()
add_test(NAME checks.ReproducibleInAnotherFolder
         COMMAND ${python} ${CMAKE_CURRENT_SOURCE_DIR}/reproducible.py
                 --source ${PROJECT_SOURCE_DIR} --build ${PROJECT_BINARY_DIR}
                 --work ${CMAKE_CURRENT_BINARY_DIR}/reproduced
                 --cmake ${CMAKE_COMMAND} ${targets} ${files} --
                 -G ${CMAKE_GENERATOR} -DCMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE}
                 -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} -DCMAKE_CXX_FLAGS=${CMAKE_CXX_FLAGS}
                 -DIMAGEDECODER_JAVA=${IMAGEDECODER_JAVA}
                 -DIMAGEDECODER_TESTS=OFF -DIMAGEDECODER_TOOLS=OFF -DIMAGEDECODER_BENCH=OFF)
set_tests_properties(checks.ReproducibleInAnotherFolder PROPERTIES COST 1000 TIMEOUT 900)

# The packages, where there are Debian's programs to make and to check them with.
find_program(DH dh)
find_program(LINTIAN lintian)
if(DH AND LINTIAN AND IMAGEDECODER_JAVA AND TARGET rctool AND IMAGEDECODER_SPLIT_SYMBOLS)
    file(GLOB frames ${PROJECT_SOURCE_DIR}/tests/data/screens/console-*.png)
    add_test(NAME checks.PackagesInstallAndDecode
             COMMAND ${python} ${CMAKE_CURRENT_SOURCE_DIR}/packages.py
                     --source ${PROJECT_SOURCE_DIR} --build ${PROJECT_BINARY_DIR}
                     --cmake ${CMAKE_COMMAND} --work ${CMAKE_CURRENT_BINARY_DIR}/packages
                     --java ${Java_JAVA_EXECUTABLE} ${frames})
    set_tests_properties(checks.PackagesInstallAndDecode PROPERTIES COST 500)
else()
    message(NOTICE "No debhelper or lintian, or not everything is built: there is no test"
                   " checks.PackagesInstallAndDecode")
endif()
