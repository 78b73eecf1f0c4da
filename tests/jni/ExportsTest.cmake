# The shared object shows the VM its own entry points and nothing else.
# Run as: cmake -DNM=... -DLIBRARY=... -P ExportsTest.cmake
set(prefix Java_nn_qv_rccore_impl_rfb_img_hive_)
set(expected JNI_OnLoad JNI_OnUnload)
foreach(method getVersion createLogger createStreambuffer createRCRenderer deleteLogger
        deleteStreambuffer deleteRCRenderer)
    list(APPEND expected ${prefix}NativeImageDecodingHelper_${method})
endforeach()
foreach(encoding ICT LBE)
    foreach(method createImageDecoder deleteImageDecoder setContrastEnhance
            setClientPostprocessingEnabled perform${encoding})
        list(APPEND expected ${prefix}ImageDecoder${encoding}Native_${method})
    endforeach()
endforeach()
list(SORT expected)

execute_process(COMMAND ${NM} --dynamic --defined-only --format=posix ${LIBRARY}
                OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(STRIP "${symbols}" symbols)
string(REGEX REPLACE " [^\n]*" "" symbols "${symbols}")
string(REPLACE "\n" ";" exported "${symbols}")
list(SORT exported)

if(NOT exported STREQUAL expected)
    message(FATAL_ERROR "Exported: ${exported}\nExpected: ${expected}")
endif()
