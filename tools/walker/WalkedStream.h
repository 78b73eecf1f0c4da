#pragma once

#include "libimagedecoder/IctTiles.h"
#include "libimagedecoder/Macroblock.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// Takes updates apart without decoding them to pixels.
namespace Vostrel::walker {

/// Bits of a payload: where the first stands, counted from the payload's first bit, and how many.
struct BitSpan {
    size_t m_uiFirst = 0;
    size_t m_uiCount = 0;

    size_t End() const { return m_uiFirst + m_uiCount; }
    bool operator==(const BitSpan&) const = default;
};

/// A skip code: how many macroblocks stay as they are; nothing for the end of the update.
struct SkipCode {
    BitSpan m_bits;
    std::optional<size_t> m_count;
};

/// What a symbol of a tile or plane says.
enum class SymbolKind : uint8_t {
    DcDifference, ///< ICT: size bits of a difference to the predictor
    Coefficient,  ///< ICT: run zeros, then a level of size bits
    ZeroRun,      ///< ICT: 16 zeros
    EndOfTile,    ///< ICT
    Literal,      ///< LBE: one sample
    RunFromLeft,  ///< LBE: run samples
    RunFromAbove, ///< LBE: run samples
};

/// Whether symbols of a kind carry a difference, a level or a sample.
constexpr bool HasValue(SymbolKind kind) {
    return kind == SymbolKind::DcDifference || kind == SymbolKind::Coefficient ||
           kind == SymbolKind::Literal;
}

struct Symbol {
    SymbolKind m_kind = SymbolKind::EndOfTile;
    BitSpan m_bits;          ///< the code and the value's bits
    size_t m_uiCodeBits = 0; ///< of them the code
    size_t m_uiPosition = 0; ///< ICT: in the diagonal scan, 0..63; LBE: first sample of the plane
    unsigned m_uiRun = 0;    ///< ICT: zeros before the level; LBE: samples, cut at the plane's end
    unsigned m_uiSize = 0;   ///< ICT: bits of the level
    int m_iValue = 0;        ///< ICT: difference or level; LBE: literal
    bool m_bUnassigned = false; ///< ICT: all-ones pattern that no encoder sends
};

/// A tile of an ICT macroblock, or a plane of an LBE block.
struct Tile {
    size_t m_uiIndex = 0; ///< in stream order
    /// The component; of LBE's packed chroma plane Cb.
    libimagedecoder::IctComponent m_component = libimagedecoder::ComponentY;
    BitSpan m_bits;
    size_t m_uiSymbols = 0;
};

/// A coded macroblock with the fields before it.
struct Macroblock {
    size_t m_uiIndex = 0; ///< in the rectangle, in row order
    libimagedecoder::Macroblock m_place{};
    BitSpan m_record;             ///< skip code, length and data, and filling bits behind them
    BitSpan m_length;             ///< length field; no bits in versions 0 and 1
    size_t m_uiLength = 0;        ///< what the field says, in bytes
    BitSpan m_data;               ///< the tiles
    bool m_bCut = false;          ///< cut out by its length, for a job
    size_t m_uiBitsBehindEnd = 0; ///< read behind the end of a record that was cut, as zeros
};

/// Where and why decoding of an update stops. The wrong bit itself cannot be known: codes of
/// variable length mostly go on decoding, to other values, for some bits after it.
struct StreamFault {
    size_t m_uiBit = 0; ///< first bit of the code or field that cannot be decoded

    /// If the fault lies in the data, it lies in these bits; or before them in a skip code, a
    /// length or a macroblock that was decoded in place. No later bit was needed to refuse the
    /// update, and the tiles of a record that was cut out by its length do not affect where the
    /// next one begins. No bits: the fault is in the quality or the rectangle, not in the data.
    BitSpan m_range;
    bool m_bMayBeCut = false; ///< the data ended too early: bytes at their end may be missing
    std::string m_expected;   ///< what can stand there
    std::string m_found;
    std::string m_failure;              ///< the decoder's message
    std::optional<size_t> m_macroblock; ///< index of the one that it is in
    std::optional<size_t> m_tile;       ///< index in the macroblock
};

/// How an update ends that has no fault.
struct WalkEnd {
    size_t m_uiBits = 0;        ///< that the update takes, without the filling of its last byte
    size_t m_uiMacroblocks = 0; ///< of the rectangle
    size_t m_uiCoded = 0;
};

/// Is told what an update is made of, in stream order, parts before the whole: the symbols of a
/// tile, the tile, the other tiles of the macroblock, the macroblock. A skip code comes before the
/// macroblock that it leads to. Nothing follows a fault.
class IStreamVisitor {
public:
    virtual ~IStreamVisitor() = default;
    virtual void OnSkip(const SkipCode&) {}
    virtual void OnSymbol(const Symbol&) {}
    virtual void OnTile(const Tile&) {}
    virtual void OnMacroblock(const Macroblock&) {}
    virtual void OnError(const StreamFault&) {}
};

} // namespace Vostrel::walker
