#include "tools/rctool/FrameEncoder.h"

#include "libimagedecoder/LbeQuality.h"
#include "libimagedecoder/UpdateSyntax.h"
#include "tools/ChangedRectangle.h"
#include "tools/IctEncoder.h"
#include "tools/LbeEncoder.h"

#include <algorithm>
#include <stdexcept>

namespace Vostrel::rctool {

using namespace streamencoder;
using libimagedecoder::UpdateRectangle;
using recording::DecoderFormat;

namespace {

constexpr uint32_t DefaultQuality = 10;

std::unique_ptr<UpdateEncoder> MakeEncoder(const DecoderFormat& decoder,
                                           std::optional<uint32_t> quality) {
    UpdateFormat format;
    format.m_codec = decoder.m_codec;
    format.m_uiProtocolVersion = decoder.m_uiProtocolVersion;
    format.m_layout = decoder.m_layout;
    switch (decoder.m_codec) {
    case Codec::Ict:
        return std::make_unique<IctEncoder>(format, decoder.m_chroma,
                                            quality.value_or(DefaultQuality));
    case Codec::Lbe:
        return std::make_unique<LbeEncoder>(
            format, decoder.m_chroma,
            quality.value_or(std::min(
                DefaultQuality,
                libimagedecoder::HighestLbeQuality(
                    libimagedecoder::RulesOf(decoder.m_uiProtocolVersion).m_uiLbeQualityMask))));
    }
    throw std::invalid_argument("The codec is unknown");
}

DecoderFormat WithRequest(DecoderFormat format, std::optional<Codec> codec,
                          const FormatRequest& request) {
    format.m_codec = codec.value_or(format.m_codec);
    format.m_uiProtocolVersion = request.m_protocol.value_or(format.m_uiProtocolVersion);
    format.m_chroma = request.m_chroma.value_or(format.m_chroma);
    format.m_layout = request.m_layout.value_or(format.m_layout);
    return format;
}

std::vector<std::optional<Codec>> CodecsOf(const FormatRequest& request) {
    if (request.m_vCodecs.empty())
        return {std::nullopt};
    return {request.m_vCodecs.begin(), request.m_vCodecs.end()};
}

UpdateRectangle Clipped(UpdateRectangle rectangle, const Picture& picture) {
    if (rectangle.m_uiX >= picture.m_uiWidth || rectangle.m_uiY >= picture.m_uiHeight)
        throw std::invalid_argument("The rectangle lies outside the frame");
    const size_t columns = picture.m_uiWidth - rectangle.m_uiX;
    const size_t rows = picture.m_uiHeight - rectangle.m_uiY;
    rectangle.m_uiWidth = static_cast<uint16_t>(std::min<size_t>(rectangle.m_uiWidth, columns));
    rectangle.m_uiHeight = static_cast<uint16_t>(std::min<size_t>(rectangle.m_uiHeight, rows));
    return rectangle;
}

} // namespace

DecoderFormat FirstFormat(const FormatRequest& request) {
    return WithRequest({}, CodecsOf(request).front(), request);
}

void CheckQuality(const FormatRequest& request) {
    for (const auto codec : CodecsOf(request))
        MakeEncoder(WithRequest({}, codec, request), request.m_quality);
}

FrameEncoder::FrameEncoder(Recorder& recorder, const FormatRequest& request, const FrameArea& area)
    : m_recorder(recorder), m_area(area) {
    for (const auto codec : CodecsOf(request))
        m_vStreams.push_back(MakeStream(codec, request));
}

/// For the first decoder that is as asked for, else for a new one.
FrameEncoder::Stream FrameEncoder::MakeStream(std::optional<Codec> codec,
                                              const FormatRequest& request) {
    const auto& decoders = m_recorder.GetDecoders();
    const auto suitable = std::ranges::find_if(decoders, [&](const DecoderFormat& decoder) {
        return WithRequest(decoder, codec, request) == decoder;
    });
    if (suitable != decoders.end())
        return {static_cast<uint8_t>(suitable - decoders.begin()),
                MakeEncoder(*suitable, request.m_quality)};
    const DecoderFormat format = WithRequest(decoders.front(), codec, request);
    auto encoder = MakeEncoder(format, request.m_quality);
    return {m_recorder.AddDecoder(format), std::move(encoder)};
}

std::optional<EncodedUpdate> FrameEncoder::Write(const std::string& frame, Picture picture,
                                                 uint64_t time, bool checked) {
    UseSize(picture.GetSize());
    const Stream& stream = m_vStreams[m_uiFrames++ % m_vStreams.size()];
    std::optional<EncodedUpdate> update;
    try {
        if (const auto area = AreaOf(picture))
            update = stream.m_pEncoder->EncodeUpdate(picture, m_previous ? &*m_previous : nullptr,
                                                     *area);
    } catch (const std::invalid_argument& error) {
        throw std::runtime_error(frame + ": " + error.what());
    }
    m_previous = std::move(picture);
    if (update)
        m_recorder.Write(*update, stream.m_uiDecoder, time, checked);
    return update;
}

void FrameEncoder::UseSize(const PictureSize& size) {
    recording::Settings settings = m_recorder.GetHeader().m_settings;
    if (size == PictureSize{settings.m_uiWidth, settings.m_uiHeight})
        return;
    settings.m_uiWidth = static_cast<uint16_t>(size.m_uiWidth);
    settings.m_uiHeight = static_cast<uint16_t>(size.m_uiHeight);
    m_recorder.Use(settings);
    m_previous.reset();
}

std::optional<UpdateRectangle> FrameEncoder::AreaOf(const Picture& picture) const {
    const UpdateRectangle whole{0, 0, static_cast<uint16_t>(picture.m_uiWidth),
                                static_cast<uint16_t>(picture.m_uiHeight)};
    const UpdateRectangle area = Clipped(m_area.m_rectangle.value_or(whole), picture);
    if (m_area.m_bChangedOnly && m_previous)
        return ChangedRectangle(picture, *m_previous, area);
    return area;
}

} // namespace Vostrel::rctool
