#include "tools/rctool/UpdateJson.h"

#include "tools/rctool/Names.h"

namespace Vostrel::rctool {

using Json = nlohmann::ordered_json;
using libimagedecoder::UpdateRectangle;
using recording::RecordedUpdate;

std::optional<UpdateRectangle> ChangedPart(const RecordedUpdate& update) {
    if (!update.m_result || *update.m_result == recording::FailedResult || *update.m_result == 0)
        return std::nullopt;
    const auto field = [&](unsigned shift) {
        return static_cast<uint16_t>(*update.m_result >> shift);
    };
    // The last two fields are width and height with the update's position added.
    const UpdateRectangle& area = update.m_encoded.m_rectangle;
    return UpdateRectangle{field(48), field(32), static_cast<uint16_t>(field(16) - area.m_uiX),
                           static_cast<uint16_t>(field(0) - area.m_uiY)};
}

const char* NameOfResult(const RecordedUpdate& update) {
    if (!update.m_result)
        return "unknown";
    if (*update.m_result == recording::FailedResult)
        return "failed";
    return *update.m_result == 0 ? "unchanged" : "changed";
}

namespace {

Json ToJson(const UpdateRectangle& area) {
    return {{"x", area.m_uiX},
            {"y", area.m_uiY},
            {"width", area.m_uiWidth},
            {"height", area.m_uiHeight}};
}

} // namespace

Json DescribeDecoder(const recording::DecoderFormat& format) {
    return {{"codec", NameOf(format.m_codec)},
            {"protocolVersion", format.m_uiProtocolVersion},
            {"chroma", NameOf(format.m_chroma)},
            {"layout", NameOf(format.m_layout)},
            {"threads", format.m_uiThreads}};
}

Json DescribeUpdate(const recording::RecordingReader& reader, const RecordedUpdate& update,
                    size_t number) {
    const recording::Settings& settings = reader.GetSettings();
    Json json = {{"update", number},
                 {"time", update.m_uiTime},
                 {"decoder", update.m_uiDecoder},
                 {"codec", NameOf(reader.GetDecoders().at(update.m_uiDecoder).m_codec)},
                 {"quality", update.m_encoded.m_uiQuality},
                 {"rectangle", ToJson(update.m_encoded.m_rectangle)},
                 {"framebuffer", {{"width", settings.m_uiWidth}, {"height", settings.m_uiHeight}}},
                 {"payloadBytes", update.m_encoded.m_vuiPayload.size()},
                 {"result", NameOfResult(update)}};
    if (const auto changed = ChangedPart(update))
        json["changed"] = ToJson(*changed);
    if (update.m_coverage != recording::Coverage::Nothing)
        json["pictureCrc"] = update.m_uiPictureCrc;
    return json;
}

} // namespace Vostrel::rctool
