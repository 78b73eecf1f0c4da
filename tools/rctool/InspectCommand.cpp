#include "tools/rctool/Commands.h"
#include "tools/rctool/InspectReport.h"
#include "tools/rctool/Interruption.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/RecordedUpdates.h"

#include <utility>

namespace Vostrel::rctool {

namespace {

struct InspectRequest {
    std::string m_recording;
    size_t m_uiUpdate = 0;
    std::optional<size_t> m_macroblock;
    bool m_bSymbols = false;
    bool m_bJson = false;
};

void Describe(CLI::App& app, InspectRequest& request) {
    AddRecordingArgument(app, request.m_recording);
    app.add_option("--update", request.m_uiUpdate, "which update, counted from 0 [0]")
        ->type_name("N");
    app.add_option("--macroblock", request.m_macroblock,
                   "only this one, counted from 0 in row order")
        ->type_name("N");
    app.add_flag("--symbols", request.m_bSymbols, "every code and value of the tiles");
    app.add_flag("--json", request.m_bJson, "as JSON");
    app.footer("Offsets count the bits of the update's data, from 0. A macroblock begins with\n"
               "its skip code. Of data that cannot be decoded the first wrong bit is named,\n"
               "with what should be there; the exit status is then 3.");
}

/// Keeps of a walk what is to be told.
class InspectCollector : public walker::IStreamVisitor {
public:
    InspectCollector(InspectReport& report, bool withSymbols)
        : m_report(report), m_bSymbols(withSymbols) {}

    void OnSkip(const walker::SkipCode& skip) override {
        m_block.m_skip = m_report.m_lastSkip = skip;
    }
    void OnSymbol(const walker::Symbol& symbol) override {
        if (m_bSymbols)
            m_tile.m_vSymbols.push_back(symbol);
    }
    void OnTile(const walker::Tile& tile) override {
        m_tile.m_tile = tile;
        m_block.m_vTiles.push_back(std::exchange(m_tile, {}));
    }
    void OnMacroblock(const walker::Macroblock& block) override {
        CheckForInterruption();
        m_block.m_block = block;
        EndBlock(block.m_uiIndex);
    }

    /// What was seen of the faulty tile and macroblock is kept as well.
    void OnError(const walker::StreamFault& fault) override {
        m_report.m_fault = fault;
        if (!m_tile.m_vSymbols.empty())
            m_block.m_vTiles.push_back(std::exchange(m_tile, {}));
        if (fault.m_macroblock)
            EndBlock(*fault.m_macroblock);
    }

private:
    void EndBlock(size_t index) {
        SeenBlock seen = std::exchange(m_block, {});
        if (index == m_report.m_macroblock.value_or(index))
            m_report.m_vBlocks.push_back(std::move(seen));
    }

    InspectReport& m_report;
    bool m_bSymbols;
    SeenTile m_tile;   ///< that is being walked
    SeenBlock m_block; ///< that is being walked
};

int Inspect(const InspectRequest& request) {
    recording::RecordingReader reader(request.m_recording);
    InspectReport report;
    report.m_uiNumber = request.m_uiUpdate;
    report.m_update = ReadUpdate(reader, request.m_recording, request.m_uiUpdate);
    report.m_codec = reader.GetDecoders().at(report.m_update.m_uiDecoder).m_codec;
    report.m_macroblock = request.m_macroblock;
    const auto& encoded = report.m_update.m_encoded;
    const size_t macroblocks = encoded.m_rectangle.MacroblockCount();
    if (request.m_macroblock && *request.m_macroblock >= macroblocks)
        throw std::invalid_argument("The update has " + std::to_string(macroblocks) +
                                    " macroblocks, counted from 0");

    InspectCollector collector(report, request.m_bSymbols);
    report.m_end = WalkerOf(reader, report.m_update).Walk(encoded, collector);
    (request.m_bJson ? PrintJson : PrintText)(report);
    return report.m_fault ? UpdateFailed : Done;
}

} // namespace

void AddInspect(CLI::App& app, Action& action) {
    AddCommand<InspectRequest>(app, action, "inspect", "Take an update apart, bit by bit", Describe,
                               Inspect);
}

} // namespace Vostrel::rctool
