#pragma once

#include <jni.h>

#include <span>

namespace Vostrel::libimagedecoder {
class ImageDecoderRenderer;
}

namespace Vostrel::jni {

/// One call of a perform method. Of the sizes and the rectangle only the low 16 bits count, as
/// unsigned values.
struct UpdateCall {
    const char* methodName; ///< for the log line of a failed update

    jlong streambuffer, renderer, decoder, logger; ///< handles; the logger's is not checked for 0

    jint transferLength; ///< bytes of transferArray
    jbyteArray transferArray;

    jint quality;
    jint framebufferWidth, framebufferHeight;
    jint x, y, width, height; ///< the update's rectangle in framebuffer pixels
};

/// A framebuffer that the renderer draws into: a direct buffer, or null for none. Its capacity is
/// the Java side's promise.
struct FramebufferBinding {
    jobject directBuffer;
    void (libimagedecoder::ImageDecoderRenderer::*set)(unsigned char* address);
};

/// Decodes one update into the framebuffers and returns the packed changed rectangle, or -1 when
/// the stream, renderer or decoder handle is 0, or after an ImageDecoderException, which becomes
/// one log line. Unused bytes went back to the Java side in either case.
///
/// Every other exception leaves this function: it means a defect or an exhausted process, not a bad
/// update.
jlong performUpdate(const UpdateCall& call, std::span<const FramebufferBinding> framebuffers);

} // namespace Vostrel::jni
