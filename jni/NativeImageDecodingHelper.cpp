#include "jni/Handles.h"
#include "jni/LoggerJava.h"
#include "jni/StreambufferJava.h"
#include "libimagedecoder/ImageDecoderRenderer.h"

using namespace Vostrel::jni;
using namespace Vostrel::libimagedecoder;

namespace {

/// The version of the native methods' declarations; the Java side refuses any other.
constexpr jint InterfaceVersion = 9;

} // namespace

extern "C" {

JNIEXPORT jint JNICALL
Java_nn_qv_rccore_impl_rfb_img_hive_NativeImageDecodingHelper_getVersion(JNIEnv*, jobject) {
    return InterfaceVersion;
}

JNIEXPORT jlong JNICALL Java_nn_qv_rccore_impl_rfb_img_hive_NativeImageDecodingHelper_createLogger(
    JNIEnv*, jobject receiver) {
    return toHandle<ILogger>(new LoggerJava(receiver));
}

JNIEXPORT jlong JNICALL
Java_nn_qv_rccore_impl_rfb_img_hive_NativeImageDecodingHelper_createStreambuffer(JNIEnv* env,
                                                                                 jobject receiver,
                                                                                 jlong logger) {
    return createOrIOException<IStreambuffer>(env, "JNI init StreambufferJava failed", [&] {
        return new StreambufferJava(receiver, fromHandle<ILogger>(logger));
    });
}

JNIEXPORT jlong JNICALL
Java_nn_qv_rccore_impl_rfb_img_hive_NativeImageDecodingHelper_createRCRenderer(JNIEnv* env, jobject,
                                                                               jlong logger) {
    return createOrIOException<ImageDecoderRenderer>(
        env, "JNI init ImageDecoderRenderer failed",
        [&] { return new ImageDecoderRenderer(fromHandle<ILogger>(logger)); });
}

JNIEXPORT void JNICALL Java_nn_qv_rccore_impl_rfb_img_hive_NativeImageDecodingHelper_deleteLogger(
    JNIEnv*, jobject, jlong logger) {
    deleteHandle<ILogger>(logger);
}

JNIEXPORT void JNICALL
Java_nn_qv_rccore_impl_rfb_img_hive_NativeImageDecodingHelper_deleteStreambuffer(
    JNIEnv*, jobject, jlong streambuffer) {
    deleteHandle<IStreambuffer>(streambuffer);
}

JNIEXPORT void JNICALL
Java_nn_qv_rccore_impl_rfb_img_hive_NativeImageDecodingHelper_deleteRCRenderer(JNIEnv*, jobject,
                                                                               jlong renderer) {
    deleteHandle<ImageDecoderRenderer>(renderer);
}

} // extern "C"
