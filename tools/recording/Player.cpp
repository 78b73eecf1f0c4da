#include "tools/recording/Player.h"

#include "tools/recording/DecoderFactory.h"

#include <algorithm>
#include <stdexcept>

namespace Vostrel::recording {

Player::Player(const Header& header, const PlayerOptions& options)
    : m_chroma(header.m_chroma), m_options(options), m_settings(Drawn(header.m_settings)),
      m_uiThreads(ChooseThreads(header, options.m_threads)),
      m_kernels(ChooseKernels(options.m_kernels, m_settings.m_kernels)),
      m_framebuffer(m_settings, m_chroma) {
    AddDecoder(header, m_uiThreads);
}

Player::~Player() = default;

Settings Player::Drawn(Settings settings) const {
    if (m_options.m_target != Target::AsRecorded)
        settings.m_sink = m_options.m_target == Target::Argb ? Sink::Argb : Sink::Planes;
    return settings;
}

/// The planes of a framebuffer have one shape, and LBE has none.
void Player::CheckSink(const DecoderFormat& format, const Settings& settings) const {
    if (settings.m_sink != Sink::Planes)
        return;
    if (format.m_codec == Codec::Lbe)
        RefusePlanes("LBE draws into ARGB framebuffers only");
    if (format.m_chroma != m_chroma)
        RefusePlanes("Decoders of several chroma subsamplings draw into ARGB framebuffers only");
}

void Player::RefusePlanes(const char* reason) const {
    if (m_options.m_target == Target::AsRecorded)
        throw RecordingError(reason);
    throw std::invalid_argument(reason);
}

void Player::AddDecoder(const DecoderFormat& format, unsigned threads) {
    CheckSink(format, m_settings);
    m_vDecoders.push_back(std::make_unique<PlayedDecoder>(format, threads, m_kernels));
    m_vDecoders.back()->UseSettings(m_settings, m_framebuffer);
}

void Player::Apply(const AddedDecoder& decoder) {
    AddDecoder(decoder.m_format, ChooseThreads(decoder.m_format, m_options.m_threads));
}

void Player::Apply(const Settings& settings) {
    const Settings drawn = Drawn(settings);
    for (const auto& decoder : m_vDecoders)
        CheckSink(decoder->GetFormat(), drawn);
    const bool sameMemory = drawn.m_uiWidth == m_settings.m_uiWidth &&
                            drawn.m_uiHeight == m_settings.m_uiHeight &&
                            drawn.m_sink == m_settings.m_sink;
    m_settings = drawn;
    if (!sameMemory)
        m_framebuffer = Framebuffer(m_settings, m_chroma);
    for (const auto& decoder : m_vDecoders)
        decoder->UseSettings(m_settings, m_framebuffer);
}

void Player::Apply(const RecordedPicture& picture) {
    if (picture.m_vuiBytes.size() != m_framebuffer.GetBytes().size())
        throw RecordingError("The recording holds a picture of another kind than is drawn");
    std::copy(picture.m_vuiBytes.begin(), picture.m_vuiBytes.end(),
              m_framebuffer.GetBytes().begin());
}

PlayedUpdate Player::Play(const RecordedUpdate& update) {
    PlayedDecoder& decoder = *m_vDecoders.at(update.m_uiDecoder);
    if (m_options.m_target == Target::ScreenPlanes)
        return decoder.PlayOntoScreenPlanes(update.m_encoded, m_settings, m_framebuffer);
    return decoder.Play(update.m_encoded);
}

} // namespace Vostrel::recording
