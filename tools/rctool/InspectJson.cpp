#include "tools/rctool/InspectReport.h"

#include "tools/rctool/Names.h"
#include "tools/walker/StreamStatistics.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace Vostrel::rctool {

using Json = nlohmann::ordered_json;
using walker::BitSpan;
using walker::Symbol;

namespace {

Json ToJson(const BitSpan& bits) {
    return {{"bit", bits.m_uiFirst}, {"bits", bits.m_uiCount}};
}

Json ToJson(const Symbol& symbol) {
    Json json = ToJson(symbol.m_bits);
    json["symbol"] = walker::NameOf(walker::ClassOf(symbol));
    json["codeBits"] = symbol.m_uiCodeBits;
    json["position"] = symbol.m_uiPosition;
    if (HasValue(symbol.m_kind))
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
                 {"range", ToJson(fault.m_range)},
                 {"dataMayBeCut", fault.m_bMayBeCut},
                 {"expected", fault.m_expected},
                 {"found", fault.m_found},
                 {"failure", fault.m_failure}};
    if (fault.m_macroblock)
        json["macroblock"] = *fault.m_macroblock;
    if (fault.m_tile)
        json["tile"] = *fault.m_tile;
    return json;
}

Json ToJson(const Difference& difference) {
    return {{"what", difference.m_what},
            {"found", difference.m_found},
            {"recorded", difference.m_recorded}};
}

Json ToJson(const Replay& replay) {
    const bool compared = replay.m_notCompared.empty();
    const bool same = compared && replay.m_vDifferences.empty();
    Json json = {{"outcome", !compared ? "not compared" : same ? "same" : "differs"}};
    if (!compared)
        json["reason"] = replay.m_notCompared;
    for (const Difference& difference : replay.m_vDifferences)
        json["differences"].push_back(ToJson(difference));
    if (replay.m_firstDifferent)
        json["firstDifferentUpdate"] = *replay.m_firstDifferent;
    return json;
}

Json ToJson(const SeenTile& tile, recording::Codec codec) {
    Json json = tile.m_tile ? ToJson(tile.m_tile->m_bits) : Json::object();
    if (tile.m_tile)
        json["component"] = NameOf(codec, tile.m_tile->m_component);
    for (const Symbol& symbol : tile.m_vSymbols)
        json["symbols"].push_back(ToJson(symbol));
    return json;
}

Json ToJson(const SeenBlock& seen, recording::Codec codec) {
    Json json = seen.m_block ? ToJson(*seen.m_block) : Json::object();
    json["skip"] = ToJson(seen.m_skip.m_bits);
    if (seen.m_skip.m_count)
        json["skip"]["count"] = *seen.m_skip.m_count;
    json["tiles"] = Json::array();
    for (const SeenTile& tile : seen.m_vTiles)
        json["tiles"].push_back(ToJson(tile, codec));
    return json;
}

} // namespace

void PrintJson(const InspectReport& report) {
    const auto& encoded = report.m_update.m_encoded;
    const auto& area = encoded.m_rectangle;
    Json json = {{"update", report.m_uiNumber},
                 {"time", report.m_update.m_uiTime},
                 {"quality", encoded.m_uiQuality},
                 {"usedQuality", report.m_uiUsedQuality},
                 {"x", area.m_uiX},
                 {"y", area.m_uiY},
                 {"width", area.m_uiWidth},
                 {"height", area.m_uiHeight},
                 {"payloadBytes", encoded.m_vuiPayload.size()},
                 {"macroblocks", Json::array()}};
    for (const SeenBlock& seen : report.m_vBlocks)
        json["macroblocks"].push_back(ToJson(seen, report.m_codec));
    if (report.m_fault)
        json["fault"] = ToJson(*report.m_fault);
    if (report.m_end)
        json["end"] = {{"bits", report.m_end->m_uiBits},
                       {"coded", report.m_end->m_uiCoded},
                       {"of", report.m_end->m_uiMacroblocks},
                       {"skip", ToJson(report.m_lastSkip.m_bits)}};
    if (report.m_update.m_result)
        json["failedWhenRecorded"] = report.m_update.m_result == recording::FailedResult;
    json["comparison"] = ToJson(report.m_replay);
    constexpr int Indent = 1;
    std::puts(json.dump(Indent).c_str());
}

} // namespace Vostrel::rctool
