#pragma once

#include "tests/model/ModelDecoder.h"
#include "tools/UpdateEncoder.h"

#include <gtest/gtest.h>

namespace Vostrel::streamencoder {

/// Decodes encoded updates with the independent model, into plane framebuffers.
class ModelViewer {
public:
    /// threads: with version 2 any but 0 makes a pool, which the stream's layout must suit.
    ModelViewer(const UpdateEncoder& encoder, unsigned threads, int width, int height,
                model::ModelSink sink)
        : m_chroma(encoder.GetChromaSubsampling()),
          m_decoder({encoder.GetFormat().m_codec == Codec::Ict ? model::ModelCodec::Ict
                                                               : model::ModelCodec::Lbe,
                     encoder.GetFormat().m_uiProtocolVersion, static_cast<unsigned>(m_chroma),
                     threads, model::KernelRule::Portable}),
          m_iWidth(width), m_iHeight(height) {
        m_decoder.SetFramebuffer(sink, width, height);
    }

    /// Decodes one update, which must neither fail nor leave bytes, and gives its result.
    uint64_t Show(const EncodedUpdate& update) {
        model::ModelStream stream(update.m_vuiPayload, update.m_vuiPayload.size());
        const auto& area = update.m_rectangle;
        const model::ModelOutcome outcome = m_decoder.Update(
            update.m_uiQuality, {area.m_uiX, area.m_uiY, area.m_uiWidth, area.m_uiHeight}, stream);
        EXPECT_EQ(outcome.error, "");
        EXPECT_EQ(outcome.consumedBytes, update.m_vuiPayload.size());
        return outcome.result;
    }

    std::vector<uint8_t> Memory() const { return m_decoder.Renderer().Memory(); }

    /// The framebuffer's planes; only for that sink.
    YCbCrPlanes Planes() const {
        const auto width = static_cast<size_t>(m_iWidth);
        const auto height = static_cast<size_t>(m_iHeight);
        const Plane chroma(width / ChromaDivX(m_chroma), height / ChromaDivY(m_chroma));
        YCbCrPlanes planes{Plane(width, height), chroma, chroma};
        const std::vector<uint8_t> memory = Memory();
        auto next = memory.begin();
        for (Plane* plane : {&planes.m_y, &planes.m_cb, &planes.m_cr}) {
            const auto size = static_cast<std::ptrdiff_t>(plane->m_vuiSamples.size());
            std::copy(next, next + size, plane->m_vuiSamples.begin());
            next += size;
        }
        return planes;
    }

private:
    ChromaSubsampling m_chroma;
    mutable model::ModelDecoder m_decoder;
    int m_iWidth;
    int m_iHeight;
};

} // namespace Vostrel::streamencoder
