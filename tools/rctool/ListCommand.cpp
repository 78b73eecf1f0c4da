#include "tools/rctool/Commands.h"
#include "tools/rctool/Counted.h"
#include "tools/rctool/Interruption.h"
#include "tools/rctool/Names.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/RecordedUpdates.h"
#include "tools/rctool/UpdateJson.h"

#include <cstdio>

namespace Vostrel::rctool {

using libimagedecoder::UpdateRectangle;
using recording::RecordedUpdate;
using recording::RecordingReader;

namespace {

struct ListRequest {
    std::string m_recording;
    bool m_bJson = false;
};

void Describe(CLI::App& app, ListRequest& request) {
    AddRecordingArgument(app, request.m_recording);
    app.add_flag("--json", request.m_bJson, "as JSON");
    app.footer("A line an update: number, recorded time, decoder and codec, quality,\n"
               "rectangle, bytes of data, and what came of it when it was recorded.");
}

std::string ToText(const UpdateRectangle& area) {
    return std::to_string(area.m_uiX) + "," + std::to_string(area.m_uiY) + " " +
           std::to_string(area.m_uiWidth) + "x" + std::to_string(area.m_uiHeight);
}

void PrintLine(const RecordingReader& reader, const RecordedUpdate& update, size_t number) {
    const auto& encoded = update.m_encoded;
    const auto changed = ChangedPart(update);
    std::printf("%5zu %12.6f s  decoder %u %s  quality %-2u  %-20s %8zu %-5s  %s%s\n", number,
                static_cast<double>(update.m_uiTime) / 1e6, update.m_uiDecoder,
                NameOf(reader.GetDecoders().at(update.m_uiDecoder).m_codec), encoded.m_uiQuality,
                ToText(encoded.m_rectangle).c_str(), encoded.m_vuiPayload.size(),
                Plural(encoded.m_vuiPayload.size(), "byte").c_str(), NameOfResult(update),
                changed ? (" " + ToText(*changed)).c_str() : "");
}

/// Calls onUpdate for every update with its number.
template <class OnUpdate>
void ReadUpdates(RecordingReader& reader, OnUpdate onUpdate) {
    size_t number = 0;
    while (const auto record = reader.Next()) {
        CheckForInterruption();
        if (const auto* const update = std::get_if<RecordedUpdate>(&*record))
            onUpdate(*update, number++);
    }
}

void PrintJson(RecordingReader& reader) {
    nlohmann::ordered_json json = {{"fileVersion", reader.GetFileVersion()},
                                   {"decoders", nlohmann::ordered_json::array()},
                                   {"updates", nlohmann::ordered_json::array()}};
    ReadUpdates(reader, [&](const RecordedUpdate& update, size_t number) {
        json["updates"].push_back(DescribeUpdate(reader, update, number));
    });
    for (const recording::DecoderFormat& format : reader.GetDecoders())
        json["decoders"].push_back(DescribeDecoder(format));
    constexpr int Indent = 1;
    std::puts(json.dump(Indent).c_str());
}

int List(const ListRequest& request) {
    RecordingReader reader(request.m_recording);
    if (request.m_bJson)
        PrintJson(reader);
    else
        ReadUpdates(reader, [&](const RecordedUpdate& update, size_t number) {
            PrintLine(reader, update, number);
        });
    return ReportEnd(request.m_recording, reader.GetEnd());
}

} // namespace

void AddList(CLI::App& app, Action& action) {
    AddCommand<ListRequest>(app, action, "list", "List the updates of a recording", Describe, List);
}

} // namespace Vostrel::rctool
