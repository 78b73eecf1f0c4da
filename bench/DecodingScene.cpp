#include "bench/DecodingScene.h"

#include "tools/IctEncoder.h"
#include "tools/LbeEncoder.h"
#include "tools/PngFile.h"

namespace Vostrel::bench {

using namespace libimagedecoder;
using namespace streamencoder;

void UpdateStream::Offer(std::vector<uint8_t>& update) {
    ResetBufferState();
    m_bEndOfStream = false;
    m_pUpdate = &update;
}

size_t UpdateStream::ReadFromBuffer() {
    if (m_pUpdate == nullptr)
        return 0;
    m_puiData = m_pUpdate->data();
    const size_t size = m_pUpdate->size();
    m_pUpdate = nullptr;
    return size;
}

Picture LoadScreen(const std::string& file) {
    return ReadPng(std::string(SCREENS_FOLDER) + "/" + file);
}

EncodedUpdate EncodeScreen(const Picture& picture, const UpdateFormat& format,
                           ChromaSubsampling chroma, uint32_t quality) {
    if (format.m_codec == Codec::Ict)
        return IctEncoder(format, chroma, quality).EncodeUpdate(picture, nullptr);
    return LbeEncoder(format, chroma, quality).EncodeUpdate(picture, nullptr);
}

DecodingScene::DecodingScene(const SceneSettings& settings)
    : m_vuiFramebuffer(settings.m_uiWidth * settings.m_uiHeight) {
    const auto width = static_cast<unsigned short>(settings.m_uiWidth);
    const auto height = static_cast<unsigned short>(settings.m_uiHeight);
    const auto chroma = static_cast<unsigned int>(settings.m_chroma);
    if (settings.m_codec == Codec::Ict)
        m_pDecoder = std::make_unique<ImageDecoderIct>(&m_Renderer, &m_Stream, &m_Logger,
                                                       settings.m_uiThreads,
                                                       settings.m_uiProtocolVersion, chroma);
    else
        m_pDecoder = std::make_unique<ImageDecoderLbe>(&m_Renderer, &m_Stream, &m_Logger,
                                                       settings.m_uiThreads,
                                                       settings.m_uiProtocolVersion, chroma);
    m_pDecoder->SetResolution(width, height);
    m_Renderer.SetFramebufferSize(width, height, false);
    m_Renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(m_vuiFramebuffer.data()));
}

void DecodingScene::Decode(EncodedUpdate& update) {
    m_Stream.Offer(update.m_vuiPayload);
    const UpdateRectangle& rectangle = update.m_rectangle;
    m_pDecoder->HandleUpdate(update.m_uiQuality, 0, rectangle.m_uiX, rectangle.m_uiY,
                             rectangle.m_uiWidth, rectangle.m_uiHeight);
}

double BitsPerPixel(const EncodedUpdate& update) {
    return 8.0 * static_cast<double>(update.m_vuiPayload.size()) /
           (static_cast<double>(update.m_rectangle.m_uiWidth) * update.m_rectangle.m_uiHeight);
}

} // namespace Vostrel::bench
