#include "fuzz/FuzzedDecoder.h"

#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderLbe.h"

#include <map>
#include <tuple>

namespace Vostrel::fuzz {

using namespace libimagedecoder;
using model::ModelOutcome;

FuzzedDecoder::FuzzedDecoder(const DecoderChoice& choice)
    : m_Renderer(MakeConverter(choice.variant, &m_Logger)), m_pDecoder(MakeDecoder(choice)),
      m_Model(choice.settings) {}

/// Three workers draw even the smallest updates.
std::unique_ptr<IImageDecoder> FuzzedDecoder::MakeDecoder(const DecoderChoice& choice) {
    const model::ModelSettings& settings = choice.settings;
    std::unique_ptr<MacroblockDecoder> decoder;
    if (settings.codec == model::ModelCodec::Lbe)
        decoder = std::make_unique<ImageDecoderLbe>(&m_Renderer, &m_Stream, &m_Logger,
                                                    settings.threads, settings.protocolVersion,
                                                    settings.chroma, PlaneKernel(choice.variant));
    else
        decoder = std::make_unique<ImageDecoderIct>(
            &m_Renderer, &m_Stream, &m_Logger, settings.threads, settings.protocolVersion,
            settings.chroma, MakeTransform(choice.variant, &m_Logger));
    if (settings.threads == 3)
        decoder->ShareDrawingFrom(1);
    return decoder;
}

FuzzedDecoder& FuzzedDecoder::For(const DecoderChoice& choice) {
    static std::map<std::tuple<model::ModelCodec, unsigned, unsigned, unsigned, unsigned>,
                    std::unique_ptr<FuzzedDecoder>>
        decoders;
    const model::ModelSettings& settings = choice.settings;
    auto& decoder = decoders[{settings.codec, settings.protocolVersion, settings.chroma,
                              settings.threads, choice.variant}];
    if (!decoder)
        decoder = std::make_unique<FuzzedDecoder>(choice);
    return *decoder;
}

void FuzzedDecoder::Reset(model::ModelSink sink, int width, int height) {
    const auto columns = static_cast<unsigned short>(width);
    const auto rows = static_cast<unsigned short>(height);
    // An unchanged size would keep the planes, and plane framebuffers show more of them than what
    // an update has written.
    m_pDecoder->SetResolution(0, 0);
    m_pDecoder->SetResolution(columns, rows);
    m_Renderer.SetFramebufferSize(columns, rows, false);
    m_Renderer.SetContrastEnhance(0);
    m_Renderer.SetClientPostprocessingEnabled(false);

    m_Model.SetFramebuffer(sink, 0, 0);
    m_Model.SetFramebuffer(sink, width, height);
    m_Model.Renderer().SetContrast(0);
    m_Model.Renderer().SetPostProcessing(false);
}

ModelOutcome FuzzedDecoder::Update(unsigned quality, const model::ModelRectangle& area,
                                   std::span<const uint8_t> bytes, size_t pieceCapacity) {
    m_Stream.Load(bytes, pieceCapacity);
    try {
        const uint64_t result = m_pDecoder->HandleUpdate(
            quality, 0, static_cast<unsigned short>(area.x), static_cast<unsigned short>(area.y),
            static_cast<unsigned short>(area.width), static_cast<unsigned short>(area.height));
        return {result, "", m_Stream.GetConsumedBytes()};
    } catch (const ImageDecoderException& exception) {
        return {~uint64_t{0}, exception.what(), m_Stream.GetConsumedBytes()};
    }
}

} // namespace Vostrel::fuzz
