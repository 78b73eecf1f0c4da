#include "tools/rctool/InspectReport.h"

#include "tools/rctool/Options.h"
#include "tools/walker/StreamStatistics.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <utility>

namespace Vostrel::rctool {

using Json = nlohmann::ordered_json;
using walker::BitSpan;
using walker::Symbol;
using walker::SymbolKind;

namespace {

std::string SymbolText(const Symbol& symbol) {
    const unsigned size = symbol.m_kind == SymbolKind::Literal ? 0 : symbol.m_uiSize;
    return walker::NameOf({symbol.m_kind, symbol.m_uiRun, size});
}

bool HasValue(const Symbol& symbol) {
    return symbol.m_kind == SymbolKind::DcDifference || symbol.m_kind == SymbolKind::Coefficient ||
           symbol.m_kind == SymbolKind::Literal;
}

void PrintSymbol(const Symbol& symbol) {
    std::printf("      %8zu %3zu bits  %2zu  %s", symbol.m_bits.m_uiFirst, symbol.m_bits.m_uiCount,
                symbol.m_uiPosition, SymbolText(symbol).c_str());
    if (HasValue(symbol))
        std::printf(" = %d", symbol.m_iValue);
    std::printf("%s\n", symbol.m_bUnassigned ? " (a pattern without a symbol)" : "");
}

Json ToJson(const BitSpan& bits) {
    return {{"bit", bits.m_uiFirst}, {"bits", bits.m_uiCount}};
}

Json ToJson(const Symbol& symbol) {
    Json json = ToJson(symbol.m_bits);
    json["symbol"] = SymbolText(symbol);
    json["codeBits"] = symbol.m_uiCodeBits;
    json["position"] = symbol.m_uiPosition;
    if (HasValue(symbol))
        json["value"] = symbol.m_iValue;
    if (symbol.m_bUnassigned)
        json["unassigned"] = true;
    return json;
}

Json ToJson(const walker::Macroblock& block) {
    Json json = {{"macroblock", block.m_uiIndex},    {"left", block.m_place.m_uiLeft},
                 {"top", block.m_place.m_uiTop},     {"bit", block.m_record.m_uiFirst},
                 {"bits", block.m_record.m_uiCount}, {"data", ToJson(block.m_data)}};
    if (block.m_length.m_uiCount != 0) {
        json["length"] = ToJson(block.m_length);
        json["length"]["bytes"] = block.m_uiLength;
        json["cut"] = block.m_bCut;
    }
    if (block.m_uiBitsBehindEnd != 0)
        json["bitsBehindEnd"] = block.m_uiBitsBehindEnd;
    return json;
}

Json ToJson(const walker::StreamFault& fault) {
    Json json = {{"bit", fault.m_uiBit},
                 {"expected", fault.m_expected},
                 {"found", fault.m_found},
                 {"failure", fault.m_failure}};
    if (fault.m_macroblock)
        json["macroblock"] = *fault.m_macroblock;
    if (fault.m_tile)
        json["tile"] = *fault.m_tile;
    return json;
}

void PrintFault(const walker::StreamFault& fault) {
    std::printf("fault at bit %zu (byte %zu, bit %zu of it)", fault.m_uiBit, fault.m_uiBit / 8,
                fault.m_uiBit % 8);
    if (fault.m_macroblock)
        std::printf(", macroblock %zu", *fault.m_macroblock);
    if (fault.m_tile)
        std::printf(", tile %zu", *fault.m_tile);
    std::printf("\n  expected: %s\n  found: %s\n  the decoder says: %s\n", fault.m_expected.c_str(),
                fault.m_found.c_str(), fault.m_failure.c_str());
}

} // namespace

void InspectReport::OnSkip(const walker::SkipCode& skip) {
    m_block.m_skip = skip;
}

void InspectReport::OnSymbol(const Symbol& symbol) {
    if (m_detail.m_bSymbols)
        m_tile.m_vSymbols.push_back(symbol);
}

void InspectReport::OnTile(const walker::Tile& tile) {
    m_tile.m_tile = tile;
    m_block.m_vTiles.push_back(std::exchange(m_tile, {}));
}

void InspectReport::OnMacroblock(const walker::Macroblock& block) {
    m_block.m_block = block;
    SeenBlock seen = std::exchange(m_block, {});
    if (block.m_uiIndex == m_detail.m_macroblock.value_or(block.m_uiIndex))
        m_vBlocks.push_back(std::move(seen));
}

/// What was seen of the faulty tile and macroblock is shown as well.
void InspectReport::OnError(const walker::StreamFault& fault) {
    m_fault = fault;
    if (!fault.m_macroblock ||
        *fault.m_macroblock != m_detail.m_macroblock.value_or(*fault.m_macroblock))
        return;
    if (!m_tile.m_vSymbols.empty())
        m_block.m_vTiles.push_back(std::exchange(m_tile, {}));
    m_vBlocks.push_back(std::exchange(m_block, {}));
}

void InspectReport::PrintTile(const SeenTile& tile) const {
    if (tile.m_tile)
        std::printf("    tile %2zu %-6s %8zu %5zu bits, %zu symbols\n", tile.m_tile->m_uiIndex,
                    NameOf(m_codec, tile.m_tile->m_component), tile.m_tile->m_bits.m_uiFirst,
                    tile.m_tile->m_bits.m_uiCount, tile.m_tile->m_uiSymbols);
    else
        std::printf("    tile with the fault\n");
    for (const Symbol& symbol : tile.m_vSymbols)
        PrintSymbol(symbol);
}

void InspectReport::PrintBlock(const SeenBlock& seen) const {
    const BitSpan& skip = seen.m_skip.m_bits;
    if (const auto& block = seen.m_block) {
        std::printf("macroblock %zu at (%zu, %zu): %zu, %zu bits\n", block->m_uiIndex,
                    block->m_place.m_uiLeft, block->m_place.m_uiTop, block->m_record.m_uiFirst,
                    block->m_record.m_uiCount);
        std::printf("    skip %-5zu %8zu %5zu bits\n", *seen.m_skip.m_count, skip.m_uiFirst,
                    skip.m_uiCount);
        if (block->m_length.m_uiCount != 0)
            std::printf("    length %-3zu %8zu %5zu bits, %s\n", block->m_uiLength,
                        block->m_length.m_uiFirst, block->m_length.m_uiCount,
                        block->m_bCut ? "cut out" : "decoded in place");
    } else {
        std::printf("macroblock with the fault: %zu\n", skip.m_uiFirst);
    }
    for (const SeenTile& tile : seen.m_vTiles)
        PrintTile(tile);
    if (seen.m_block && seen.m_block->m_uiBitsBehindEnd != 0)
        std::printf("    %zu bits read behind the end of the record, as zeros\n",
                    seen.m_block->m_uiBitsBehindEnd);
}

void InspectReport::PrintEnd() const {
    const walker::SkipCode& skip = m_block.m_skip;
    std::printf("last skip code: %zu, %zu bits, ", skip.m_bits.m_uiFirst, skip.m_bits.m_uiCount);
    if (skip.m_count)
        std::printf("count %zu\n", *skip.m_count);
    else
        std::printf("the end marker\n");
    std::printf("%zu of %zu macroblocks coded, %zu bits\n", m_end->m_uiCoded,
                m_end->m_uiMacroblocks, m_end->m_uiBits);
}

void InspectReport::PrintText(size_t number, const recording::RecordedUpdate& update) const {
    const auto& encoded = update.m_encoded;
    const auto& area = encoded.m_rectangle;
    std::printf("update %zu at %.6f s: %u x %u at (%u, %u), quality %u, %zu bytes\n", number,
                static_cast<double>(update.m_uiTime) / 1e6, area.m_uiWidth, area.m_uiHeight,
                area.m_uiX, area.m_uiY, encoded.m_uiQuality, encoded.m_vuiPayload.size());
    for (const SeenBlock& block : m_vBlocks)
        PrintBlock(block);
    if (m_fault)
        PrintFault(*m_fault);
    else if (m_end)
        PrintEnd();
}

void InspectReport::PrintJson(size_t number, const recording::RecordedUpdate& update) const {
    const auto& encoded = update.m_encoded;
    const auto& area = encoded.m_rectangle;
    Json json = {{"update", number},
                 {"time", update.m_uiTime},
                 {"quality", encoded.m_uiQuality},
                 {"x", area.m_uiX},
                 {"y", area.m_uiY},
                 {"width", area.m_uiWidth},
                 {"height", area.m_uiHeight},
                 {"payloadBytes", encoded.m_vuiPayload.size()},
                 {"macroblocks", Json::array()}};
    for (const SeenBlock& seen : m_vBlocks) {
        Json block = seen.m_block ? ToJson(*seen.m_block) : Json::object();
        block["skip"] = ToJson(seen.m_skip.m_bits);
        if (seen.m_skip.m_count)
            block["skip"]["count"] = *seen.m_skip.m_count;
        block["tiles"] = Json::array();
        for (const SeenTile& tile : seen.m_vTiles) {
            Json shown = tile.m_tile ? ToJson(tile.m_tile->m_bits) : Json::object();
            if (tile.m_tile)
                shown["component"] = NameOf(m_codec, tile.m_tile->m_component);
            for (const Symbol& symbol : tile.m_vSymbols)
                shown["symbols"].push_back(ToJson(symbol));
            block["tiles"].push_back(shown);
        }
        json["macroblocks"].push_back(block);
    }
    if (m_fault)
        json["fault"] = ToJson(*m_fault);
    if (m_end)
        json["end"] = {{"bits", m_end->m_uiBits},
                       {"coded", m_end->m_uiCoded},
                       {"of", m_end->m_uiMacroblocks},
                       {"skip", ToJson(m_block.m_skip.m_bits)}};
    constexpr int Indent = 1;
    std::puts(json.dump(Indent).c_str());
}

} // namespace Vostrel::rctool
