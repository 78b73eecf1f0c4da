#include "tools/recording/PlayedDecoder.h"

#include "libimagedecoder/ImageDecoderException.h"
#include "tools/recording/DecoderFactory.h"
#include "tools/recording/ScreenPlanes.h"

namespace Vostrel::recording {

void PlayedDecoder::UpdateStream::SetPayload(const std::vector<uint8_t>& payload) {
    ResetBufferState();
    m_bEndOfStream = false;
    m_puiData = const_cast<uint8_t*>(payload.data()); // A stream over memory only reads it.
    m_uiSize = payload.size();
}

PlayedDecoder::PlayedDecoder(const DecoderFormat& format, unsigned threads,
                             const KernelLevel& kernels)
    : m_format(format), m_renderer(CreateYCbCr4xxToArgb32Of(kernels, &m_logger)),
      m_pDecoder(MakeDecoder(format, threads, kernels, {&m_renderer, &m_stream, &m_logger})) {}

PlayedDecoder::~PlayedDecoder() = default;

void PlayedDecoder::UseSettings(const Settings& settings, Framebuffer& framebuffer) {
    m_renderer.SetContrastEnhance(settings.m_uiContrast);
    m_renderer.SetClientPostprocessingEnabled(settings.m_bPostprocessing);
    m_pDecoder->SetResolution(settings.m_uiWidth, settings.m_uiHeight);
    m_renderer.SetFramebufferSize(settings.m_uiWidth, settings.m_uiHeight, false);
    const bool argb = settings.m_sink == Sink::Argb;
    m_renderer.SetFramebufferArgb(argb ? framebuffer.GetBytes().data() : nullptr);
    m_renderer.SetFramebufferY(argb ? nullptr : framebuffer.GetPlane(0));
    m_renderer.SetFramebufferCb(argb ? nullptr : framebuffer.GetPlane(1));
    m_renderer.SetFramebufferCr(argb ? nullptr : framebuffer.GetPlane(2));
}

PlayedUpdate PlayedDecoder::Play(const EncodedUpdate& update) {
    const auto& area = update.m_rectangle;
    m_stream.SetPayload(update.m_vuiPayload);
    try {
        const uint64_t result = m_pDecoder->HandleUpdate(
            update.m_uiQuality, 0, area.m_uiX, area.m_uiY, area.m_uiWidth, area.m_uiHeight);
        const char* const failure = result == FailedResult ? "The quality is unknown" : "";
        return {result, failure, m_stream.GetPosition()};
    } catch (const libimagedecoder::ImageDecoderException& error) {
        return {FailedResult, error.what(), update.m_vuiPayload.size()};
    }
}

/// Plane framebuffers of a whole screen place samples oddly. So an update is decoded into planes of
/// its rectangle, which hold what the screen shows there: unchanged blocks keep it.
PlayedUpdate PlayedDecoder::PlayOntoScreenPlanes(const EncodedUpdate& update,
                                                 const Settings& settings, Framebuffer& screen) {
    const auto& area = update.m_rectangle;
    ScreenPlanes planes(settings, m_format.m_chroma, area, screen);
    planes.TakeFromScreen();
    m_renderer.SetFramebufferSize(area.m_uiWidth, area.m_uiHeight, true);
    m_renderer.SetFramebufferY(planes.GetPlane(0));
    m_renderer.SetFramebufferCb(planes.GetPlane(1));
    m_renderer.SetFramebufferCr(planes.GetPlane(2));
    const PlayedUpdate played = Play(update);
    if (played.m_failure.empty())
        planes.PutOnScreen();
    return played;
}

} // namespace Vostrel::recording
