#pragma once

#include "tools/rctool/Comparison.h"
#include "tools/recording/Recording.h"
#include "tools/walker/WalkedStream.h"

#include <optional>
#include <vector>

namespace Vostrel::rctool {

/// What is reported of a tile.
struct SeenTile {
    std::optional<walker::Tile> m_tile; ///< nothing for one that a fault ended
    std::vector<walker::Symbol> m_vSymbols;
};

/// What is reported of a coded macroblock.
struct SeenBlock {
    walker::SkipCode m_skip;
    std::optional<walker::Macroblock> m_block; ///< nothing for one that a fault ended
    std::vector<SeenTile> m_vTiles;
};

/// One update, taken apart.
struct InspectReport {
    recording::Codec m_codec{};
    size_t m_uiNumber = 0; ///< of the update in its recording
    recording::RecordedUpdate m_update;
    uint32_t m_uiUsedQuality = 0;       ///< what the decoder makes of the update's quality
    std::optional<size_t> m_macroblock; ///< the only one that is reported
    std::vector<SeenBlock> m_vBlocks;
    walker::SkipCode m_lastSkip;
    std::optional<walker::StreamFault> m_fault; ///< or else the end
    std::optional<walker::WalkEnd> m_end;
    Replay m_replay;
};

/// Write to the standard output.
void PrintText(const InspectReport& report);
void PrintJson(const InspectReport& report);

} // namespace Vostrel::rctool
