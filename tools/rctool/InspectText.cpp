#include "tools/rctool/InspectReport.h"

#include "tools/rctool/Interruption.h"
#include "tools/rctool/Names.h"
#include "tools/walker/StreamStatistics.h"

#include <cstdio>

namespace Vostrel::rctool {

using walker::BitSpan;
using walker::Symbol;

namespace {

void PrintSymbol(const Symbol& symbol) {
    std::printf("      %8zu %3zu bits  %2zu  %s", symbol.m_bits.m_uiFirst, symbol.m_bits.m_uiCount,
                symbol.m_uiPosition, walker::NameOf(walker::ClassOf(symbol)).c_str());
    if (HasValue(symbol.m_kind))
        std::printf(" = %d", symbol.m_iValue);
    std::printf("%s\n", symbol.m_bUnassigned ? " (a pattern without a symbol)" : "");
}

void PrintTile(const SeenTile& tile, recording::Codec codec) {
    if (tile.m_tile)
        std::printf("    tile %2zu %-6s %8zu %5zu bits, %zu symbols\n", tile.m_tile->m_uiIndex,
                    NameOf(codec, tile.m_tile->m_component), tile.m_tile->m_bits.m_uiFirst,
                    tile.m_tile->m_bits.m_uiCount, tile.m_tile->m_uiSymbols);
    else
        std::printf("    tile with the fault\n");
    for (const Symbol& symbol : tile.m_vSymbols)
        PrintSymbol(symbol);
}

void PrintBlock(const SeenBlock& seen, recording::Codec codec) {
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
        std::printf("macroblock with the fault, from bit %zu on\n", skip.m_uiFirst);
    }
    for (const SeenTile& tile : seen.m_vTiles)
        PrintTile(tile, codec);
    if (seen.m_block && seen.m_block->m_uiBitsBehindEnd != 0)
        std::printf("    %zu bits read behind the end of the record, as zeros\n",
                    seen.m_block->m_uiBitsBehindEnd);
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

void PrintEnd(const InspectReport& report) {
    const walker::SkipCode& skip = report.m_lastSkip;
    std::printf("last skip code: %zu, %zu bits, ", skip.m_bits.m_uiFirst, skip.m_bits.m_uiCount);
    if (skip.m_count)
        std::printf("count %zu\n", *skip.m_count);
    else
        std::printf("the end marker\n");
    std::printf("%zu of %zu macroblocks coded, %zu bits\n", report.m_end->m_uiCoded,
                report.m_end->m_uiMacroblocks, report.m_end->m_uiBits);
}

} // namespace

void PrintText(const InspectReport& report) {
    const auto& encoded = report.m_update.m_encoded;
    const auto& area = encoded.m_rectangle;
    std::printf("update %zu at %.6f s: %u x %u at (%u, %u), quality %u, %zu bytes\n",
                report.m_uiNumber, static_cast<double>(report.m_update.m_uiTime) / 1e6,
                area.m_uiWidth, area.m_uiHeight, area.m_uiX, area.m_uiY, encoded.m_uiQuality,
                encoded.m_vuiPayload.size());
    for (const SeenBlock& block : report.m_vBlocks) {
        CheckForInterruption();
        PrintBlock(block, report.m_codec);
    }
    if (report.m_fault) {
        PrintFault(*report.m_fault);
        return;
    }
    if (report.m_macroblock && report.m_vBlocks.empty())
        std::printf("macroblock %zu is not coded: it stays as it was\n", *report.m_macroblock);
    PrintEnd(report);
}

} // namespace Vostrel::rctool
