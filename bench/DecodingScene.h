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

/// The bundled screens to measure on, encoded once and kept.
streamencoder::Picture LoadScreen(const std::string& file);

/// A viewer's decoder with its framebuffer, for one picture encoded as one update.
class DecodingScene {
public:
    DecodingScene(const streamencoder::Picture& picture, streamencoder::UpdateFormat format,
                  streamencoder::ChromaSubsampling chroma, uint32_t quality, unsigned long threads);

    /// Decodes and draws the update once.
    void DecodeUpdate();

    uint64_t Pixels() const { return m_uiPixels; }
    double BitsPerPixel() const;

private:
    SilentLogger m_Logger;
    UpdateStream m_Stream;
    libimagedecoder::ImageDecoderRenderer m_Renderer{&m_Logger};
    std::unique_ptr<libimagedecoder::IImageDecoder> m_pDecoder;
    streamencoder::EncodedUpdate m_Update;
    std::vector<uint32_t> m_vuiFramebuffer;
    uint64_t m_uiPixels;
};

} // namespace Vostrel::bench
