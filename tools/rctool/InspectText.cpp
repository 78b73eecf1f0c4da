#include "tools/rctool/InspectReport.h"

#include "tools/rctool/Counted.h"
#include "tools/rctool/Interruption.h"
#include "tools/rctool/Names.h"
#include "tools/walker/StreamStatistics.h"

#include <cstdio>

namespace Vostrel::rctool {

using walker::BitSpan;
using walker::Symbol;

namespace {

std::string BitsIn(const BitSpan& span) {
    return Plural(span.m_uiCount, "bit");
}

void PrintSymbol(const Symbol& symbol) {
    std::printf("      %8zu %3zu %-4s  %2zu  %s", symbol.m_bits.m_uiFirst, symbol.m_bits.m_uiCount,
                BitsIn(symbol.m_bits).c_str(), symbol.m_uiPosition,
                walker::NameOf(walker::ClassOf(symbol)).c_str());
    if (HasValue(symbol.m_kind))
        std::printf(" = %d", symbol.m_iValue);
    std::printf("%s\n", symbol.m_bUnassigned ? " (a pattern without a symbol)" : "");
}

void PrintTile(const SeenTile& tile, recording::Codec codec) {
    if (tile.m_tile)
        std::printf("    tile %2zu %-6s %8zu %5zu %s, %s\n", tile.m_tile->m_uiIndex,
                    NameOf(codec, tile.m_tile->m_component), tile.m_tile->m_bits.m_uiFirst,
                    tile.m_tile->m_bits.m_uiCount, BitsIn(tile.m_tile->m_bits).c_str(),
                    Counted(tile.m_tile->m_uiSymbols, "symbol").c_str());
    else
        std::printf("    tile in which decoding stops\n");
    for (const Symbol& symbol : tile.m_vSymbols)
        PrintSymbol(symbol);
}

void PrintBlock(const SeenBlock& seen, recording::Codec codec) {
    const BitSpan& skip = seen.m_skip.m_bits;
    if (const auto& block = seen.m_block) {
        std::printf("macroblock %zu at (%zu, %zu): %zu, %s\n", block->m_uiIndex,
                    block->m_place.m_uiLeft, block->m_place.m_uiTop, block->m_record.m_uiFirst,
                    Counted(block->m_record.m_uiCount, "bit").c_str());
        std::printf("    skip %-5zu %8zu %5zu %s\n", *seen.m_skip.m_count, skip.m_uiFirst,
                    skip.m_uiCount, BitsIn(skip).c_str());
        if (block->m_length.m_uiCount != 0)
            std::printf("    length %-3zu %8zu %5zu bits, %s\n", block->m_uiLength,
                        block->m_length.m_uiFirst, block->m_length.m_uiCount,
                        block->m_bCut ? "cut out" : "decoded in place");
    } else {
        std::printf("macroblock in which decoding stops, from bit %zu on\n", skip.m_uiFirst);
    }
    for (const SeenTile& tile : seen.m_vTiles)
        PrintTile(tile, codec);
    if (seen.m_block && seen.m_block->m_uiBitsBehindEnd != 0)
        std::printf("    %s read past the end of the record, as zeros\n",
                    Counted(seen.m_block->m_uiBitsBehindEnd, "bit").c_str());
}

void PrintRange(const walker::StreamFault& fault) {
    const BitSpan& range = fault.m_range;
    if (range.m_uiCount == 0) {
        std::printf("  the fault is not in the data, but in what is named above\n");
        return;
    }
    std::printf("  the fault is in bits %zu to %zu%s%s, if it is in the data\n", range.m_uiFirst,
                range.End() - 1,
                range.m_uiFirst == 0 ? ""
                                     : ", or before them in a skip code, a length\n"
                                       "  or a macroblock that was decoded in place",
                fault.m_bMayBeCut ? ", or bytes after them are missing" : "");
}

void PrintFault(const walker::StreamFault& fault) {
    std::printf("decoding stops at bit %zu (byte %zu, bit %zu of it)", fault.m_uiBit,
                fault.m_uiBit / 8, fault.m_uiBit % 8);
    if (fault.m_macroblock)
        std::printf(", macroblock %zu", *fault.m_macroblock);
    if (fault.m_tile)
        std::printf(", tile %zu", *fault.m_tile);
    std::printf("\n  expected: %s\n  found: %s\n  the decoder reports: %s\n",
                fault.m_expected.c_str(), fault.m_found.c_str(), fault.m_failure.c_str());
    PrintRange(fault);
}

void PrintFailedBefore(const recording::RecordedUpdate& update) {
    if (!update.m_result)
        std::printf("whether it failed when it was recorded is unknown\n");
    else if (*update.m_result == recording::FailedResult)
        std::printf("it failed when it was recorded, too\n");
    else
        std::printf("it did not fail when it was recorded\n");
}

void PrintReplay(const InspectReport& report) {
    const Replay& replay = report.m_replay;
    const bool hasChecksum = report.m_update.m_coverage != recording::Coverage::Nothing;
    if (report.m_fault || !replay.m_failure.empty())
        PrintFailedBefore(report.m_update);
    else if (!replay.m_notCompared.empty())
        std::printf("not compared with the recording: %s\n", replay.m_notCompared.c_str());
    else if (replay.m_vDifferences.empty())
        std::printf("decodes to the recorded %s\n",
                    hasChecksum ? "picture" : "result; no checksum of its picture was recorded");
    else
        std::printf("decodes, but not to the recorded %s\n", hasChecksum ? "picture" : "result");
    for (const Difference& difference : replay.m_vDifferences)
        std::printf("  %s\n", Text(difference).c_str());
    if (replay.m_firstDifferent)
        std::printf("update %zu is the first that differs\n", *replay.m_firstDifferent);
}

void PrintEnd(const InspectReport& report) {
    const walker::SkipCode& skip = report.m_lastSkip;
    std::printf("last skip code: %zu, %s, ", skip.m_bits.m_uiFirst,
                Counted(skip.m_bits.m_uiCount, "bit").c_str());
    if (skip.m_count)
        std::printf("count %zu\n", *skip.m_count);
    else
        std::printf("the end marker\n");
    std::printf("%zu of %s coded, %s\n", report.m_end->m_uiCoded,
                Counted(report.m_end->m_uiMacroblocks, "macroblock").c_str(),
                Counted(report.m_end->m_uiBits, "bit").c_str());
}

} // namespace

void PrintText(const InspectReport& report) {
    const auto& encoded = report.m_update.m_encoded;
    const auto& area = encoded.m_rectangle;
    std::printf("update %zu at %.6f s: %u x %u at (%u, %u), quality %u, %s\n", report.m_uiNumber,
                static_cast<double>(report.m_update.m_uiTime) / 1e6, area.m_uiWidth,
                area.m_uiHeight, area.m_uiX, area.m_uiY, encoded.m_uiQuality,
                Counted(encoded.m_vuiPayload.size(), "byte").c_str());
    if (report.m_uiUsedQuality != encoded.m_uiQuality)
        std::printf("the quality is out of range: the decoder uses its low bits, %u\n",
                    report.m_uiUsedQuality);
    for (const SeenBlock& block : report.m_vBlocks) {
        CheckForInterruption();
        PrintBlock(block, report.m_codec);
    }
    if (!report.m_fault && report.m_macroblock && report.m_vBlocks.empty())
        std::printf("macroblock %zu is not coded: it stays as it was\n", *report.m_macroblock);
    if (report.m_fault)
        PrintFault(*report.m_fault);
    else
        PrintEnd(report);
    PrintReplay(report);
}

} // namespace Vostrel::rctool
