#pragma once

#include "tools/UpdateFormat.h"
#include "tools/walker/BitCursor.h"
#include "tools/walker/WalkedStream.h"

#include <cstdint>
#include <memory>

namespace Vostrel::walker {

/// How a stream's updates are coded.
struct WalkFormat {
    streamencoder::Codec m_codec = streamencoder::Codec::Ict;
    unsigned m_uiProtocolVersion = 2; ///< 0, 1 or 2
    streamencoder::ChromaSubsampling m_chroma = streamencoder::ChromaSubsampling::Yuv420;
    bool m_bPool = false; ///< a decoder with a pool is meant: records are cut by their lengths
};

/// The part of an update's quality that the decoder uses: its low 4 bits, or 3 in LBE version 0.
uint32_t UsedQuality(const WalkFormat& format, uint32_t quality);

/// What the two encodings do differently in an update.
class BlockWalker {
public:
    virtual ~BlockWalker() = default;

    /// The walker of an update. Throws WalkError for a quality that the encoding does not have.
    static std::unique_ptr<BlockWalker> Make(const WalkFormat& format, uint32_t quality);

    /// Walks the tiles of a macroblock.
    virtual void Walk(BitCursor& bits, IStreamVisitor& visitor) = 0;

    /// The tile that was begun last.
    const Tile& GetTile() const { return m_tile; }

protected:
    void BeginTile(size_t index, libimagedecoder::IctComponent component, const BitCursor& bits) {
        m_tile = {index, component, {bits.GetPosition(), 0}, 0};
    }
    void Tell(IStreamVisitor& visitor, const Symbol& symbol) {
        ++m_tile.m_uiSymbols;
        visitor.OnSymbol(symbol);
    }
    void EndTile(const BitCursor& bits, IStreamVisitor& visitor) {
        m_tile.m_bits.m_uiCount = bits.GetPosition() - m_tile.m_bits.m_uiFirst;
        visitor.OnTile(m_tile);
    }

private:
    Tile m_tile;
};

} // namespace Vostrel::walker
