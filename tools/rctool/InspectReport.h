#pragma once

#include "tools/recording/Recording.h"
#include "tools/walker/WalkedStream.h"

#include <optional>
#include <vector>

namespace Vostrel::rctool {

/// How much of an update is told.
struct InspectDetail {
    std::optional<size_t> m_macroblock; ///< only that one
    bool m_bSymbols = false;
};

/// Collects what an update is made of and prints it.
class InspectReport : public walker::IStreamVisitor {
public:
    InspectReport(recording::Codec codec, const InspectDetail& detail)
        : m_codec(codec), m_detail(detail) {}

    void OnSkip(const walker::SkipCode& skip) override;
    void OnSymbol(const walker::Symbol& symbol) override;
    void OnTile(const walker::Tile& tile) override;
    void OnMacroblock(const walker::Macroblock& block) override;
    void OnError(const walker::StreamFault& fault) override;

    void SetEnd(const std::optional<walker::WalkEnd>& end) { m_end = end; }
    bool HasFault() const { return m_fault.has_value(); }

    /// Write to the standard output.
    void PrintText(size_t number, const recording::RecordedUpdate& update) const;
    void PrintJson(size_t number, const recording::RecordedUpdate& update) const;

private:
    struct SeenTile {
        std::optional<walker::Tile> m_tile; ///< nothing for one that a fault ended
        std::vector<walker::Symbol> m_vSymbols;
    };
    struct SeenBlock {
        walker::SkipCode m_skip;
        std::optional<walker::Macroblock> m_block; ///< nothing for one that a fault ended
        std::vector<SeenTile> m_vTiles;
    };

    void PrintBlock(const SeenBlock& block) const;
    void PrintTile(const SeenTile& tile) const;
    void PrintEnd() const;

    recording::Codec m_codec;
    InspectDetail m_detail;
    SeenTile m_tile;   ///< that is being walked
    SeenBlock m_block; ///< that is being walked
    std::vector<SeenBlock> m_vBlocks;
    std::optional<walker::StreamFault> m_fault;
    std::optional<walker::WalkEnd> m_end;
};

} // namespace Vostrel::rctool
