#pragma once

#include "fuzz/FuzzInput.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::fuzz {

/// One update as the fuzzer writes it. Every value of every field means something.
struct FuzzedUpdate {
    enum Kind : uint8_t {
        FarRectangle = 1, ///< the rectangle as it stands, else folded into the framebuffer's size
        GoodUpdate = 2,   ///< a good update of the harness's own instead of the payload
        PostProcessing = 4,
        LargeQuality = 8, ///< sets bits of the quality that decoders have to ignore
    };

    uint8_t m_uiKind = 0;
    uint8_t m_uiQuality = 0;
    uint8_t m_uiContrast = 0; ///< the level, less 20
    uint8_t m_uiPiece = 0;    ///< bytes of a read, less 1; 255 for all at once
    uint16_t m_uiX = 0;
    uint16_t m_uiY = 0;
    uint16_t m_uiWidth = 0;
    uint16_t m_uiHeight = 0;
    std::vector<uint8_t> m_vPayload;

    bool Is(Kind kind) const { return (m_uiKind & kind) != 0; }
};

/// The life of a decoder as the fuzzer writes it: what it is created with, then its updates.
struct FuzzedLife {
    enum class Sink { Argb, Planes, None };

    uint8_t m_uiVersion = 0;
    uint8_t m_uiChroma = 0;
    uint8_t m_uiThreads = 0;
    uint8_t m_uiKernel = 0;
    uint8_t m_uiSink = 0;
    uint8_t m_uiPlace = 0; ///< which end of the framebuffer lies at a guard page
    uint8_t m_uiWidth = 0;
    uint8_t m_uiHeight = 0;
    std::vector<FuzzedUpdate> m_vUpdates;

    static constexpr int MaxWidth = 96;
    static constexpr int MaxHeight = 80;

    unsigned Version() const { return m_uiVersion % 3u; }
    unsigned Chroma() const { return m_uiChroma % 3u; }
    unsigned Threads() const { return m_uiThreads % 5u; }
    unsigned Kernel() const { return m_uiKernel % 3u; }
    Sink SinkKind() const { return static_cast<Sink>(m_uiSink % 3u); }
    bool HasPool() const { return Version() == 2 && Threads() > 0; }

    /// Small framebuffers are the usual ones, since they are the fast ones.
    int Width() const { return Edge(m_uiWidth, MaxWidth); }
    int Height() const { return Edge(m_uiHeight, MaxHeight); }

private:
    static int Edge(uint8_t byte, int largest) { return 1 + byte % (byte < 224 ? 40 : largest); }
};

/// Reads a life; everything but its first bytes may be missing.
FuzzedLife ReadLife(const uint8_t* data, size_t size);

/// The bytes that ReadLife makes this life of.
std::vector<uint8_t> WriteLife(const FuzzedLife& life);

} // namespace Vostrel::fuzz
