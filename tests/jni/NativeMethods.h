#pragma once

#include <jni.h>

#include <cstdint>

/// The exported functions under test, as the VM would call them.
extern "C" {

jint JNI_OnLoad(JavaVM* vm, void* reserved);
void JNI_OnUnload(JavaVM* vm, void* reserved);

#define HELPER(name) Java_nn_qv_rccore_impl_rfb_img_hive_NativeImageDecodingHelper_##name
#define ICT(name) Java_nn_qv_rccore_impl_rfb_img_hive_ImageDecoderICTNative_##name
#define LBE(name) Java_nn_qv_rccore_impl_rfb_img_hive_ImageDecoderLBENative_##name

jint HELPER(getVersion)(JNIEnv*, jobject);
jlong HELPER(createLogger)(JNIEnv*, jobject receiver);
jlong HELPER(createStreambuffer)(JNIEnv*, jobject receiver, jlong logger);
jlong HELPER(createRCRenderer)(JNIEnv*, jobject, jlong logger);
void HELPER(deleteLogger)(JNIEnv*, jobject, jlong handle);
void HELPER(deleteStreambuffer)(JNIEnv*, jobject, jlong handle);
void HELPER(deleteRCRenderer)(JNIEnv*, jobject, jlong handle);

#define DECODER_CLASS(CLASS)                                                                       \
    jlong CLASS(createImageDecoder)(JNIEnv*, jobject, jlong renderer, jlong streambuffer,          \
                                    jlong logger, jint threads, jint protocolVersion,              \
                                    jint chromaSubsampling);                                       \
    void CLASS(deleteImageDecoder)(JNIEnv*, jobject, jlong handle);                                \
    void CLASS(setContrastEnhance)(JNIEnv*, jobject, jlong renderer, jint level);                  \
    void CLASS(setClientPostprocessingEnabled)(JNIEnv*, jobject, jlong renderer, jboolean enabled);
DECODER_CLASS(ICT)
DECODER_CLASS(LBE)
#undef DECODER_CLASS

jlong ICT(performICT)(JNIEnv*, jobject, jint length, jobject argb, jobject yPlane, jobject cbPlane,
                      jobject crPlane, jbyteArray data, jint quality, jint framebufferWidth,
                      jint framebufferHeight, jlong, jlong, jint x, jint y, jint width, jint height,
                      jlong streambuffer, jlong renderer, jlong decoder, jlong logger);
jlong LBE(performLBE)(JNIEnv*, jobject, jint length, jobject argb, jbyteArray data, jint quality,
                      jint framebufferWidth, jint framebufferHeight, jlong, jlong, jint x, jint y,
                      jint width, jint height, jlong streambuffer, jlong renderer, jlong decoder,
                      jlong logger);

} // extern "C"
