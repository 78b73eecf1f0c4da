#include "tools/recording/Player.h"

#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderLbe.h"

#include <algorithm>
#include <stdexcept>

namespace Vostrel::recording {

using libimagedecoder::UpdateRectangle;

namespace {

constexpr uint32_t MostDefaultThreads = 64;

bool CutsRecords(const Header& header) {
    return header.m_uiProtocolVersion >= 2 && header.m_layout == RecordLayout::Pool;
}

unsigned ChooseThreads(const Header& header, std::optional<unsigned> wanted) {
    const bool cutsRecords = CutsRecords(header);
    const unsigned threads = wanted.value_or(
        cutsRecords ? std::clamp<uint32_t>(header.m_uiThreads, 1, MostDefaultThreads) : 0);
    if (cutsRecords && threads == 0)
        throw std::invalid_argument("The recording's layout is pool: it needs at least 1 thread");
    if (header.m_uiProtocolVersion >= 2 && header.m_layout == RecordLayout::Continuous &&
        threads != 0)
        throw std::invalid_argument("The recording's layout is continuous: it needs 0 threads");
    return threads;
}

void CheckSink(Codec codec, const Settings& settings) {
    if (codec == Codec::Lbe && settings.m_sink == Sink::Planes)
        throw std::invalid_argument("LBE draws into ARGB framebuffers only");
}

/// Where a rectangle of a plane lies in the scratch planes and on the screen.
struct PlanePart {
    uint8_t* m_puiScratch;
    size_t m_uiScratchStride;
    uint8_t* m_puiScreen;
    size_t m_uiScreenStride;
    size_t m_uiColumns;
    size_t m_uiRows;
};

PlanePart PartOf(Framebuffer& scratch, Framebuffer& screen, size_t plane, UpdateRectangle rectangle,
                 size_t divX, size_t divY) {
    const size_t screenWidth = screen.GetWidth() / divX;
    const size_t screenHeight = screen.GetHeight() / divY;
    const size_t left = std::min(rectangle.m_uiX / divX, screenWidth);
    const size_t top = std::min(rectangle.m_uiY / divY, screenHeight);
    const size_t scratchWidth = scratch.GetWidth() / divX;
    return {scratch.GetPlane(plane),
            scratchWidth,
            screen.GetPlane(plane) + top * screenWidth + left,
            screenWidth,
            std::min(scratchWidth, screenWidth - left),
            std::min(scratch.GetHeight() / divY, screenHeight - top)};
}

void CopyRows(const uint8_t* from, size_t fromStride, uint8_t* to, size_t toStride, size_t columns,
              size_t rows) {
    for (; rows > 0; --rows) {
        std::copy_n(from, columns, to);
        from += fromStride;
        to += toStride;
    }
}

} // namespace

void Player::UpdateStream::SetPayload(const std::vector<uint8_t>& payload) {
    ResetBufferState();
    m_bEndOfStream = false;
    m_puiData = const_cast<uint8_t*>(payload.data()); // A stream over memory only reads it.
    m_uiSize = payload.size();
}

Player::Player(const Header& header, const PlayerOptions& options)
    : m_codec(header.m_codec), m_chroma(header.m_chroma), m_target(options.m_target),
      m_settings(Drawn(header.m_settings)), m_uiThreads(ChooseThreads(header, options.m_threads)),
      m_kernels(options.m_kernels.value_or(FastestKernels(m_settings.m_kernels))),
      m_framebuffer(m_settings, m_chroma), m_renderer(MakeConverter(m_kernels, &m_logger)) {
    CheckSink(m_codec, m_settings);
    const auto chroma = static_cast<unsigned>(m_chroma);
    if (m_codec == Codec::Ict)
        m_pDecoder = std::make_unique<libimagedecoder::ImageDecoderIct>(
            &m_renderer, &m_stream, &m_logger, m_uiThreads, header.m_uiProtocolVersion, chroma,
            MakeTransform(m_kernels, &m_logger));
    else
        m_pDecoder = std::make_unique<libimagedecoder::ImageDecoderLbe>(
            &m_renderer, &m_stream, &m_logger, m_uiThreads, header.m_uiProtocolVersion, chroma);
    UseSettings();
}

Player::~Player() = default;

Settings Player::Drawn(Settings settings) const {
    if (m_target != Target::AsRecorded)
        settings.m_sink = m_target == Target::Argb ? Sink::Argb : Sink::Planes;
    return settings;
}

void Player::Apply(const Settings& settings) {
    const Settings drawn = Drawn(settings);
    CheckSink(m_codec, drawn);
    const bool sameMemory = drawn.m_uiWidth == m_settings.m_uiWidth &&
                            drawn.m_uiHeight == m_settings.m_uiHeight &&
                            drawn.m_sink == m_settings.m_sink;
    m_settings = drawn;
    if (!sameMemory)
        m_framebuffer = Framebuffer(m_settings, m_chroma);
    UseSettings();
}

void Player::Apply(const RecordedPicture& picture) {
    if (picture.m_vuiBytes.size() != m_framebuffer.GetBytes().size())
        throw RecordingError("The recording holds a picture of another kind than is drawn");
    std::copy(picture.m_vuiBytes.begin(), picture.m_vuiBytes.end(),
              m_framebuffer.GetBytes().begin());
}

void Player::UseSettings() {
    m_renderer.SetContrastEnhance(m_settings.m_uiContrast);
    m_renderer.SetClientPostprocessingEnabled(m_settings.m_bPostprocessing);
    m_pDecoder->SetResolution(m_settings.m_uiWidth, m_settings.m_uiHeight);
    AimAtFramebuffer();
}

void Player::AimAtFramebuffer() {
    m_renderer.SetFramebufferSize(m_settings.m_uiWidth, m_settings.m_uiHeight, false);
    const bool argb = m_settings.m_sink == Sink::Argb;
    m_renderer.SetFramebufferArgb(argb ? m_framebuffer.GetBytes().data() : nullptr);
    m_renderer.SetFramebufferY(argb ? nullptr : m_framebuffer.GetPlane(0));
    m_renderer.SetFramebufferCb(argb ? nullptr : m_framebuffer.GetPlane(1));
    m_renderer.SetFramebufferCr(argb ? nullptr : m_framebuffer.GetPlane(2));
}

PlayedUpdate Player::Play(const EncodedUpdate& update) {
    m_stream.SetPayload(update.m_vuiPayload);
    try {
        const uint64_t result =
            m_target == Target::ScreenPlanes ? DecodeOntoScreenPlanes(update) : Decode(update);
        const char* const failure = result == FailedResult ? "The quality is unknown" : "";
        return {result, failure, m_stream.GetPosition()};
    } catch (const libimagedecoder::ImageDecoderException& error) {
        return {FailedResult, error.what(), update.m_vuiPayload.size()};
    }
}

uint64_t Player::Decode(const EncodedUpdate& update) {
    const UpdateRectangle& area = update.m_rectangle;
    return m_pDecoder->HandleUpdate(update.m_uiQuality, 0, area.m_uiX, area.m_uiY, area.m_uiWidth,
                                    area.m_uiHeight);
}

/// Plane framebuffers of a whole screen place samples oddly. So an update is decoded into planes of
/// its rectangle, which hold what the screen shows there: unchanged blocks keep it.
uint64_t Player::DecodeOntoScreenPlanes(const EncodedUpdate& update) {
    const UpdateRectangle& area = update.m_rectangle;
    Settings packed = m_settings;
    packed.m_uiWidth = area.m_uiWidth;
    packed.m_uiHeight = area.m_uiHeight;
    Framebuffer scratch(packed, m_chroma);
    std::array<PlanePart, 3> parts{};
    for (size_t plane = 0; plane < parts.size(); ++plane) {
        const size_t divX = plane == 0 ? 1 : ChromaDivX(m_chroma);
        const size_t divY = plane == 0 ? 1 : ChromaDivY(m_chroma);
        parts[plane] = PartOf(scratch, m_framebuffer, plane, area, divX, divY);
        const PlanePart& part = parts[plane];
        CopyRows(part.m_puiScreen, part.m_uiScreenStride, part.m_puiScratch, part.m_uiScratchStride,
                 part.m_uiColumns, part.m_uiRows);
    }
    m_renderer.SetFramebufferSize(area.m_uiWidth, area.m_uiHeight, true);
    m_renderer.SetFramebufferY(parts[0].m_puiScratch);
    m_renderer.SetFramebufferCb(parts[1].m_puiScratch);
    m_renderer.SetFramebufferCr(parts[2].m_puiScratch);
    const uint64_t result = Decode(update);
    for (const PlanePart& part : parts)
        CopyRows(part.m_puiScratch, part.m_uiScratchStride, part.m_puiScreen, part.m_uiScreenStride,
                 part.m_uiColumns, part.m_uiRows);
    return result;
}

} // namespace Vostrel::recording
