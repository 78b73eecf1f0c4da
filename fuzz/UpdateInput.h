#pragma once

#include "fuzz/FuzzInput.h"
#include "fuzz/Kernels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <vector>

namespace Vostrel::fuzz {

/// One update as the fuzzer writes it. Every value of every field means something.
struct FuzzedUpdate {
    enum Kind : uint8_t {
        FarRectangle = 1, ///< the rectangle as it stands, else folded into the framebuffer's size
        GoodUpdate = 2,   ///< a good update of the harness's own instead of the payload
        PostProcessing = 4,
        LargeQuality = 8, ///< sets bits of the quality that decoders have to ignore
        Repeated = 16,    ///< the payload over and over, for updates of hundreds of macroblocks
    };

    uint8_t m_uiKind = 0;
    uint8_t m_uiQuality = 0;
    uint8_t m_uiContrast = 0; ///< the level, less 20
    uint8_t m_uiPiece = 0;    ///< bytes of a read, less 1; 255 for all at once
    uint16_t m_uiX = 0;
    uint16_t m_uiY = 0;
    uint16_t m_uiWidth = 0;
    uint16_t m_uiHeight = 0;
    std::span<const uint8_t> m_Payload; ///< not owned

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
    static constexpr int MaxRowsWidth = 6400; ///< 400 macroblocks
    static constexpr int MaxRowsHeight = 24;

    /// Mostly version 2 and some threads, so that about half of all lives have a pool.
    unsigned Version() const { return std::min(m_uiVersion % 5u, 2u); }
    unsigned Chroma() const { return m_uiChroma % 3u; }
    unsigned Threads() const { return m_uiThreads % 8u == 0 ? 0 : 1 + (m_uiThreads % 8u - 1) % 4; }
    unsigned Kernel() const { return m_uiKernel % KernelVariants(); }
    Sink SinkKind() const { return static_cast<Sink>(m_uiSink % 3u); }
    bool HasPool() const { return Version() == 2 && Threads() > 0; }

    /// Small framebuffers are the usual ones, since they are the fast ones.
    int Width() const { return Edge(m_uiWidth, MaxWidth); }
    int Height() const { return Edge(m_uiHeight, MaxHeight); }

    /// The same for lives with one or two very long rows.
    int RowsWidth() const {
        constexpr int Widths[] = {1024, 2567, 4096, MaxRowsWidth};
        return Widths[m_uiWidth % std::size(Widths)];
    }
    int RowsHeight() const { return 1 + m_uiHeight % MaxRowsHeight; }

private:
    static int Edge(uint8_t byte, int largest) { return 1 + byte % (byte < 224 ? 40 : largest); }
};

/// Reads a life; everything but its first bytes may be missing. Payloads stay in data.
FuzzedLife ReadLife(const uint8_t* data, size_t size);

/// The bytes that ReadLife makes this life of.
std::vector<uint8_t> WriteLife(const FuzzedLife& life);

} // namespace Vostrel::fuzz
