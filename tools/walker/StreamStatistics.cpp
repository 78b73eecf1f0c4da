#include "tools/walker/StreamStatistics.h"

namespace Vostrel::walker {
namespace {

int64_t Difference(size_t a, size_t b) {
    return static_cast<int64_t>(a) - static_cast<int64_t>(b);
}

} // namespace

SymbolClass ClassOf(const Symbol& symbol) {
    // The width of a literal is that of its plane, no choice of the encoder.
    const unsigned size = symbol.m_kind == SymbolKind::Literal ? 0 : symbol.m_uiSize;
    return {symbol.m_kind, symbol.m_uiRun, size};
}

std::string NameOf(const SymbolClass& symbolClass) {
    const std::string run = std::to_string(symbolClass.m_uiRun);
    const std::string size = std::to_string(symbolClass.m_uiSize);
    switch (symbolClass.m_kind) {
    case SymbolKind::DcDifference:
        return "dc " + size;
    case SymbolKind::Coefficient:
        return "ac " + run + "/" + size;
    case SymbolKind::ZeroRun:
        return "zrl";
    case SymbolKind::EndOfTile:
        return "eob";
    case SymbolKind::Literal:
        return "literal";
    case SymbolKind::RunFromLeft:
        return "left " + run;
    case SymbolKind::RunFromAbove:
        return "above " + run;
    }
    return "";
}

void StreamStatistics::OnSkip(const SkipCode& skip) {
    m_uiSkipBits += skip.m_bits.m_uiCount;
}

void StreamStatistics::OnSymbol(const Symbol& symbol) {
    SymbolCount& count = m_symbols[ClassOf(symbol)];
    ++count.m_uiCount;
    count.m_uiBits += symbol.m_bits.m_uiCount;
}

void StreamStatistics::OnTile(const Tile& tile) {
    m_auiComponentBits[tile.m_component] += tile.m_bits.m_uiCount;
}

void StreamStatistics::OnMacroblock(const Macroblock& block) {
    m_uiLengthBits += block.m_length.m_uiCount;
    m_vuiMacroblockBits.push_back(static_cast<uint32_t>(block.m_record.m_uiCount));
    m_iFillingBits += Difference(block.m_record.End(), block.m_data.End());
}

void StreamStatistics::OnError(const StreamFault&) {
    ++m_uiFaults;
}

void StreamStatistics::AddUpdate(const WalkEnd& end, size_t payloadBytes) {
    m_uiMacroblocks += end.m_uiMacroblocks;
    m_iFillingBits += Difference(8 * payloadBytes, end.m_uiBits);
}

void StreamStatistics::Add(const StreamStatistics& other) {
    m_uiMacroblocks += other.m_uiMacroblocks;
    m_uiSkipBits += other.m_uiSkipBits;
    m_uiLengthBits += other.m_uiLengthBits;
    m_iFillingBits += other.m_iFillingBits;
    m_uiFaults += other.m_uiFaults;
    for (size_t component = 0; component < m_auiComponentBits.size(); ++component)
        m_auiComponentBits[component] += other.m_auiComponentBits[component];
    m_vuiMacroblockBits.insert(m_vuiMacroblockBits.end(), other.m_vuiMacroblockBits.begin(),
                               other.m_vuiMacroblockBits.end());
    for (const auto& [symbolClass, count] : other.m_symbols) {
        m_symbols[symbolClass].m_uiCount += count.m_uiCount;
        m_symbols[symbolClass].m_uiBits += count.m_uiBits;
    }
}

} // namespace Vostrel::walker
