#pragma once

#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderLbe.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tools/UpdateEncoder.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Vostrel::bench {

class SilentLogger : public libimagedecoder::ILogger {
public:
    void LogInternal(const char* /*message*/) override {}
};

/// A stream that can be read again and again: one refill delivers one whole update.
class UpdateStream : public libimagedecoder::IStreambuffer {
public:
    UpdateStream() : IStreambuffer(nullptr) {}

    void Offer(std::vector<uint8_t>& update);
    size_t ReadFromBuffer() override;

private:
    std::vector<uint8_t>* m_pUpdate = nullptr;
};

/// One of the bundled screens.
streamencoder::Picture LoadScreen(const std::string& file);

/// Encodes a whole picture as one update.
streamencoder::EncodedUpdate EncodeScreen(const streamencoder::Picture& picture,
                                          const streamencoder::UpdateFormat& format,
                                          streamencoder::ChromaSubsampling chroma,
                                          uint32_t quality);

/// How a viewer creates its decoder, and the size of its framebuffer.
struct SceneSettings {
    streamencoder::Codec m_codec = streamencoder::Codec::Ict;
    unsigned m_uiProtocolVersion = 0;
    streamencoder::ChromaSubsampling m_chroma = streamencoder::ChromaSubsampling::Yuv420;
    unsigned long m_uiThreads = 0;
    size_t m_uiWidth = 0;
    size_t m_uiHeight = 0;
};

/// A viewer's decoder with its framebuffer.
class DecodingScene {
public:
    explicit DecodingScene(const SceneSettings& settings);

    /// Decodes and draws an update that suits the settings. It is only read.
    void Decode(streamencoder::EncodedUpdate& update);

    uint64_t Pixels() const { return m_vuiFramebuffer.size(); }
    const std::vector<uint32_t>& Framebuffer() const { return m_vuiFramebuffer; }
    const libimagedecoder::ImageDecoderRenderer& Renderer() const { return m_Renderer; }

private:
    SilentLogger m_Logger;
    UpdateStream m_Stream;
    libimagedecoder::ImageDecoderRenderer m_Renderer{&m_Logger};
    std::unique_ptr<libimagedecoder::IImageDecoder> m_pDecoder;
    std::vector<uint32_t> m_vuiFramebuffer;
};

/// Bits of an update for every pixel of its rectangle.
double BitsPerPixel(const streamencoder::EncodedUpdate& update);

} // namespace Vostrel::bench
