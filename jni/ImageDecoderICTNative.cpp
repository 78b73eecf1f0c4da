#include "jni/DecoderMethods.h"
#include "jni/PerformUpdate.h"
#include "libimagedecoder/ImageDecoderIct.h"

namespace jni = Vostrel::jni;
using namespace Vostrel::libimagedecoder;

extern "C" {

JNIEXPORT jlong JNICALL
Java_nn_qv_rccore_impl_rfb_img_hive_ImageDecoderICTNative_createImageDecoder(
    JNIEnv* env, jobject, jlong renderer, jlong streambuffer, jlong logger, jint threads,
    jint protocolVersion, jint chromaSubsampling) {
    return jni::createImageDecoder<ImageDecoderIct>(env, renderer, streambuffer, logger, threads,
                                                    protocolVersion, chromaSubsampling);
}

JNIEXPORT void JNICALL Java_nn_qv_rccore_impl_rfb_img_hive_ImageDecoderICTNative_deleteImageDecoder(
    JNIEnv*, jobject, jlong decoder) {
    jni::deleteImageDecoder(decoder);
}

JNIEXPORT void JNICALL Java_nn_qv_rccore_impl_rfb_img_hive_ImageDecoderICTNative_setContrastEnhance(
    JNIEnv*, jobject, jlong renderer, jint level) {
    jni::setContrastEnhance(renderer, level);
}

JNIEXPORT void JNICALL
Java_nn_qv_rccore_impl_rfb_img_hive_ImageDecoderICTNative_setClientPostprocessingEnabled(
    JNIEnv*, jobject, jlong renderer, jboolean enabled) {
    jni::setClientPostprocessingEnabled(renderer, enabled);
}

/// The two unnamed arguments are of use to the Java side alone.
JNIEXPORT jlong JNICALL Java_nn_qv_rccore_impl_rfb_img_hive_ImageDecoderICTNative_performICT(
    JNIEnv*, jobject, jint length, jobject argb, jobject yPlane, jobject cbPlane, jobject crPlane,
    jbyteArray data, jint quality, jint framebufferWidth, jint framebufferHeight, jlong, jlong,
    jint x, jint y, jint width, jint height, jlong streambuffer, jlong renderer, jlong decoder,
    jlong logger) {
    const jni::FramebufferBinding framebuffers[] = {
        {argb, &ImageDecoderRenderer::SetFramebufferArgb},
        {yPlane, &ImageDecoderRenderer::SetFramebufferY},
        {cbPlane, &ImageDecoderRenderer::SetFramebufferCb},
        {crPlane, &ImageDecoderRenderer::SetFramebufferCr},
    };
    return jni::performUpdate({.methodName = __func__,
                               .streambuffer = streambuffer,
                               .renderer = renderer,
                               .decoder = decoder,
                               .logger = logger,
                               .transferLength = length,
                               .transferArray = data,
                               .quality = quality,
                               .framebufferWidth = framebufferWidth,
                               .framebufferHeight = framebufferHeight,
                               .x = x,
                               .y = y,
                               .width = width,
                               .height = height},
                              framebuffers);
}

} // extern "C"
