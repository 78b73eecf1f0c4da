#include "tools/rctool/Commands.h"
#include "tools/rctool/Counted.h"
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
    bool m_bWithoutReplay = false;
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
    app.add_flag("--no-replay", request.m_bWithoutReplay,
                 "do not decode up to the update to compare its picture\n"
                 "with the recorded checksum");
    app.footer("Offsets count the bits of the update's data, from 0. A macroblock begins with\n"
               "its skip code. Of data that cannot be decoded: the bit at which decoding\n"
               "stops, and the bits among which the fault is. The status is then 3, or 0 if\n"
               "the update failed when it was recorded. It is 4 for one that decodes, but not\n"
               "to the recorded picture.");
}

/// Keeps of a walk what is to be reported.
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

void CheckMacroblock(const InspectRequest& request, const recording::RecordedUpdate& update) {
    const size_t macroblocks = update.m_encoded.m_rectangle.MacroblockCount();
    if (request.m_macroblock && *request.m_macroblock >= macroblocks)
        throw std::invalid_argument("The update has " + Counted(macroblocks, "macroblock") +
                                    ", counted from 0");
}

/// Walks the update of the report, which the reader delivered last.
void WalkUpdate(const recording::RecordingReader& reader, bool withSymbols, InspectReport& report) {
    const walker::StreamWalker streamWalker = WalkerOf(reader, report.m_update);
    const auto& encoded = report.m_update.m_encoded;
    InspectCollector collector(report, withSymbols);
    report.m_uiUsedQuality = walker::UsedQuality(streamWalker.GetFormat(), encoded.m_uiQuality);
    report.m_end = streamWalker.Walk(encoded, collector);
}

/// Of the update alone, as `decode --verify` returns it for a recording of one update.
int OutcomeOf(const InspectReport& report) {
    const bool failed = report.m_fault || !report.m_replay.m_failure.empty();
    if (failed && report.m_update.m_result != recording::FailedResult)
        return UpdateFailed;
    return report.m_replay.m_vDifferences.empty() ? Done : NotVerified;
}

int Inspect(const InspectRequest& request) {
    recording::RecordingReader reader(request.m_recording);
    const recording::RecordingEnd end = ReadToEnd(reader);
    const auto index = reader.FindUpdates();
    if (request.m_uiUpdate >= index.size())
        return ReportNoSuchUpdate(request.m_recording, index.size(), end);
    reader.GoTo(index[request.m_uiUpdate].m_uiOffset);
    const auto record = reader.Next();
    if (!record)
        return ReportEnd(request.m_recording, reader.GetEnd());

    InspectReport report;
    report.m_uiNumber = request.m_uiUpdate;
    report.m_update = std::get<recording::RecordedUpdate>(*record);
    report.m_codec = reader.GetDecoders().at(report.m_update.m_uiDecoder).m_codec;
    report.m_macroblock = request.m_macroblock;
    CheckMacroblock(request, report.m_update);
    WalkUpdate(reader, request.m_bSymbols, report);
    report.m_replay = request.m_bWithoutReplay ? Replay{"--no-replay", "", {}, {}}
                                               : ReplayUpTo(reader, request.m_uiUpdate);
    (request.m_bJson ? PrintJson : PrintText)(report);
    const int outcome = OutcomeOf(report);
    const int state = ReportEnd(request.m_recording, end);
    return outcome != Done ? outcome : state;
}

} // namespace

void AddInspect(CLI::App& app, Action& action) {
    AddCommand<InspectRequest>(app, action, "inspect", "Take an update apart, bit by bit", Describe,
                               Inspect);
}

} // namespace Vostrel::rctool
