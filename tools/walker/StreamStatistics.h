#pragma once

#include "tools/walker/WalkedStream.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace Vostrel::walker {

/// A kind of symbols that count as the same.
struct SymbolClass {
    SymbolKind m_kind;
    unsigned m_uiRun;
    unsigned m_uiSize;

    bool operator<(const SymbolClass& other) const {
        return std::tie(m_kind, m_uiRun, m_uiSize) <
               std::tie(other.m_kind, other.m_uiRun, other.m_uiSize);
    }
};

SymbolClass ClassOf(const Symbol& symbol);

/// A short name: "dc 3", "ac 0/1" (run/size), "zrl", "eob", "literal", "left 16", "above 3".
std::string NameOf(const SymbolClass& symbolClass);

/// How often symbols of a class came, and what they took.
struct SymbolCount {
    size_t m_uiCount = 0;
    size_t m_uiBits = 0;
};

/// Sums of what the updates of a stream are made of. All bits of a payload belong to exactly one
/// of: skip codes, lengths, tiles, filling.
class StreamStatistics : public IStreamVisitor {
public:
    void OnSkip(const SkipCode& skip) override;
    void OnSymbol(const Symbol& symbol) override;
    void OnTile(const Tile& tile) override;
    void OnMacroblock(const Macroblock& block) override;
    void OnError(const StreamFault& fault) override;

    /// Adds an update that has been walked without a fault.
    void AddUpdate(const WalkEnd& end, size_t payloadBytes);

    /// Adds the sums of another stream.
    void Add(const StreamStatistics& other);

    size_t m_uiMacroblocks = 0; ///< of all rectangles
    size_t m_uiSkipBits = 0;
    size_t m_uiLengthBits = 0;

    /// Behind cut records and behind the last bit of updates, less the zeros that were read behind
    /// either: those are no bits of a payload.
    int64_t m_iFillingBits = 0;
    size_t m_uiFaults = 0;
    std::array<size_t, libimagedecoder::ComponentCount> m_auiComponentBits{};
    std::vector<uint32_t> m_vuiMacroblockBits; ///< records of coded macroblocks, filling included
    std::map<SymbolClass, SymbolCount> m_symbols;
};

} // namespace Vostrel::walker
