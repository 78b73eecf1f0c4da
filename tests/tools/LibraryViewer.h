#pragma once

#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderLbe.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/StreambufferArray.h"
#include "tests/support/RecordingLogger.h"
#include "tools/UpdateEncoder.h"

#include <gtest/gtest.h>

#include <memory>

namespace Vostrel::streamencoder {

/// Decodes encoded updates with the library, into plane framebuffers or an ARGB one.
class LibraryViewer {
public:
    /// threads: with version 2 any but 0 makes a pool, which the stream's layout must suit.
    LibraryViewer(const UpdateEncoder& encoder, unsigned threads, uint16_t width, uint16_t height)
        : m_y(width, height), m_cb(width / ChromaDivX(encoder.GetChromaSubsampling()),
                                   height / ChromaDivY(encoder.GetChromaSubsampling())),
          m_cr(m_cb), m_vuiArgb(size_t{width} * height) {
        const auto version = encoder.GetFormat().m_uiProtocolVersion;
        const auto chroma = static_cast<unsigned>(encoder.GetChromaSubsampling());
        if (encoder.GetFormat().m_codec == Codec::Ict)
            m_pDecoder = std::make_unique<libimagedecoder::ImageDecoderIct>(
                &m_renderer, &m_stream, &m_logger, threads, version, chroma);
        else
            m_pDecoder = std::make_unique<libimagedecoder::ImageDecoderLbe>(
                &m_renderer, &m_stream, &m_logger, threads, version, chroma);
        m_pDecoder->SetResolution(width, height);
        m_renderer.SetFramebufferSize(width, height, false);
        DrawIntoArgb();
    }

    void DrawIntoArgb() {
        m_renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(m_vuiArgb.data()));
    }

    void DrawIntoPlanes() {
        m_renderer.SetFramebufferArgb(nullptr);
        m_renderer.SetFramebufferY(m_y.At(0, 0));
        m_renderer.SetFramebufferCb(m_cb.At(0, 0));
        m_renderer.SetFramebufferCr(m_cr.At(0, 0));
    }

    /// Decodes one update, which must not leave bytes, and gives its result.
    uint64_t Show(const EncodedUpdate& update) {
        std::vector<uint8_t> payload = update.m_vuiPayload;
        m_stream.SetPayload(payload);
        const auto& area = update.m_rectangle;
        const uint64_t result = m_pDecoder->HandleUpdate(
            update.m_uiQuality, 0, area.m_uiX, area.m_uiY, area.m_uiWidth, area.m_uiHeight);
        EXPECT_EQ(m_stream.GetPosition(), payload.size());
        return result;
    }

    const Plane& GetLuma() const { return m_y; }
    const std::vector<uint32_t>& GetArgb() const { return m_vuiArgb; }

private:
    /// A stream that gets the bytes of one update after the other.
    class UpdateStream : public libimagedecoder::StreambufferArray {
    public:
        explicit UpdateStream(libimagedecoder::ILogger* logger)
            : StreambufferArray(logger, nullptr, 0) {}
        void SetPayload(std::vector<uint8_t>& payload) {
            ResetBufferState();
            m_puiData = payload.data();
            m_uiSize = payload.size();
        }
    };

    Plane m_y;
    Plane m_cb;
    Plane m_cr;
    std::vector<uint32_t> m_vuiArgb;
    tests::RecordingLogger m_logger;
    libimagedecoder::ImageDecoderRenderer m_renderer{&m_logger};
    UpdateStream m_stream{&m_logger};
    std::unique_ptr<libimagedecoder::IImageDecoder> m_pDecoder;
};

} // namespace Vostrel::streamencoder
