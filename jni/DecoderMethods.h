#pragma once

#include "jni/Handles.h"
#include "libimagedecoder/IImageDecoder.h"
#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/IStreambuffer.h"
#include "libimagedecoder/ImageDecoderRenderer.h"

#include <jni.h>

/// What the native methods of the decoder classes have in common.
namespace Vostrel::jni {

/// Creates a Decoder over the objects behind the handles.
/// @param threads number of pool workers; a negative one becomes huge and fails in the constructor
template <class Decoder>
jlong createImageDecoder(JNIEnv* env, jlong renderer, jlong streambuffer, jlong logger,
                         jint threads, jint protocolVersion, jint chromaSubsampling) {
    using namespace libimagedecoder;
    return createOrIOException<IImageDecoder>(env, "JNI init IImageDecoder failed", [&] {
        return new Decoder(fromHandle<ImageDecoderRenderer>(renderer),
                           fromHandle<IStreambuffer>(streambuffer), fromHandle<ILogger>(logger),
                           static_cast<unsigned long>(threads),
                           static_cast<unsigned int>(protocolVersion),
                           static_cast<unsigned int>(chromaSubsampling));
    });
}

inline void deleteImageDecoder(jlong decoder) {
    deleteHandle<libimagedecoder::IImageDecoder>(decoder);
}

/// @param level contrast stretch, 0 (off) to 100
inline void setContrastEnhance(jlong renderer, jint level) {
    fromHandle<libimagedecoder::ImageDecoderRenderer>(renderer)->SetContrastEnhance(level);
}

/// Only the boolean's regular true, 1, enables.
inline void setClientPostprocessingEnabled(jlong renderer, jboolean enabled) {
    fromHandle<libimagedecoder::ImageDecoderRenderer>(renderer)->SetClientPostprocessingEnabled(
        enabled == JNI_TRUE);
}

} // namespace Vostrel::jni
