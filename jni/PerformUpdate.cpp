#include "jni/PerformUpdate.h"

#include "jni/Handles.h"
#include "jni/StreambufferJava.h"
#include "libimagedecoder/IImageDecoder.h"
#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libjni/JavaVm.h"

#include <vector>

namespace Vostrel::jni {
namespace {

using namespace libimagedecoder;

constexpr jlong Failed = -1;

uint16_t low16(jint value) {
    return static_cast<uint16_t>(value);
}

std::vector<unsigned char*> resolve(std::span<const FramebufferBinding> framebuffers) {
    JNIEnv* env = libjni::JavaVm::getInstance().getEnv();
    std::vector<unsigned char*> addresses;
    for (const FramebufferBinding& framebuffer : framebuffers) {
        void* address = framebuffer.directBuffer
                            ? env->GetDirectBufferAddress(framebuffer.directBuffer)
                            : nullptr;
        addresses.push_back(static_cast<unsigned char*>(address));
    }
    return addresses;
}

} // namespace

jlong performUpdate(const UpdateCall& call, std::span<const FramebufferBinding> framebuffers) {
    if (!call.renderer || !call.decoder || !call.streambuffer)
        return Failed;
    auto& stream = static_cast<StreambufferJava&>(*fromHandle<IStreambuffer>(call.streambuffer));
    auto& renderer = *fromHandle<ImageDecoderRenderer>(call.renderer);
    auto& decoder = *fromHandle<IImageDecoder>(call.decoder);
    const uint16_t width = low16(call.framebufferWidth);
    const uint16_t height = low16(call.framebufferHeight);

    stream.FillInternalBufferFromArray(static_cast<unsigned long>(call.transferLength),
                                       call.transferArray);
    decoder.SetResolution(width, height);
    const std::vector<unsigned char*> addresses = resolve(framebuffers);

    jlong result = Failed;
    try {
        renderer.SetFramebufferSize(width, height, false);
        for (size_t i = 0; i < framebuffers.size(); ++i)
            (renderer.*framebuffers[i].set)(addresses[i]);
        result = static_cast<jlong>(decoder.HandleUpdate(static_cast<unsigned int>(call.quality), 0,
                                                         low16(call.x), low16(call.y),
                                                         low16(call.width), low16(call.height)));
    } catch (const ImageDecoderException& failure) {
        fromHandle<ILogger>(call.logger)
            ->Log("ImageDecoderException occured in %s %s", call.methodName, failure.what());
    }
    stream.ReleaseInternalBuffer();
    return result;
}

} // namespace Vostrel::jni
