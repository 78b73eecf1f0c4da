#pragma once

#include "fuzz/GuardedPages.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/model/ModelRenderer.h"
#include "tests/model/ModelUpdate.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

namespace Vostrel::fuzz {

/// A viewer's framebuffer between guard pages: one ARGB32 buffer or three planes.
class GuardedFramebuffer {
public:
    GuardedFramebuffer(int maxWidth, int maxHeight)
        : m_Pages{GuardedPages(size_t{4} * Area(maxWidth, maxHeight)),
                  GuardedPages(Area(maxWidth, maxHeight)),
                  GuardedPages(Area(maxWidth, maxHeight))} {}

    /// Zeroed memory of this size in pixels.
    void Place(model::ModelSink sink, model::ModelChroma chroma, int width, int height,
               GuardedPages::Flush flush) {
        const bool argb = sink == model::ModelSink::Argb;
        const size_t chromaBytes = Area(width / chroma.divX, height / chroma.divY);
        const std::array<size_t, 3> bytes{Area(width, height) * (argb ? 4u : 1u), chromaBytes,
                                          chromaBytes};
        m_uiParts = argb ? 1 : 3;
        for (size_t i = 0; i < m_uiParts; ++i)
            m_Parts[i] = m_Pages[i].Place(bytes[i], flush);
    }

    /// Gives the memory to a renderer, or no memory at all.
    void AttachTo(libimagedecoder::ImageDecoderRenderer& renderer, bool attached) {
        uint8_t* const first = attached ? m_Parts[0].data() : nullptr;
        const bool planes = attached && m_uiParts == 3;
        renderer.SetFramebufferArgb(m_uiParts == 1 ? first : nullptr);
        renderer.SetFramebufferY(planes ? first : nullptr);
        renderer.SetFramebufferCb(planes ? m_Parts[1].data() : nullptr);
        renderer.SetFramebufferCr(planes ? m_Parts[2].data() : nullptr);
    }

    /// Whether it holds these bytes, planes one behind the other.
    bool Holds(std::span<const uint8_t> expected) const {
        for (const auto& part : Parts()) {
            if (expected.size() < part.size() ||
                std::memcmp(part.data(), expected.data(), part.size()) != 0)
                return false;
            expected = expected.subspan(part.size());
        }
        return expected.empty();
    }

    bool IsBlank() const {
        return std::ranges::all_of(Parts(), [](const auto& part) {
            // Every byte equals its neighbour, and the first one is blank.
            return part.empty() || (part[0] == 0 && std::memcmp(part.data(), part.data() + 1,
                                                                part.size() - 1) == 0);
        });
    }

    bool GuardsIntact() const {
        return std::all_of(m_Pages.begin(), m_Pages.begin() + static_cast<long>(m_uiParts),
                           [](const GuardedPages& pages) { return pages.Intact(); });
    }

private:
    static size_t Area(int width, int height) {
        return static_cast<size_t>(width) * static_cast<size_t>(height);
    }
    std::span<const std::span<uint8_t>> Parts() const {
        return std::span(m_Parts).first(m_uiParts);
    }

    std::array<GuardedPages, 3> m_Pages;
    std::array<std::span<uint8_t>, 3> m_Parts;
    size_t m_uiParts = 0;
};

} // namespace Vostrel::fuzz
