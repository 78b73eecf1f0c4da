#include <jni.h>

/// Stands in for the shared object of another release, which speaks another version of the native
/// interface.
extern "C" JNIEXPORT jint JNICALL
Java_nn_qv_rccore_impl_rfb_img_hive_NativeImageDecodingHelper_getVersion(JNIEnv*, jclass) {
    return 8;
}
