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

namespace {

EncodedUpdate Encode(const Picture& picture, const UpdateFormat& format, ChromaSubsampling chroma,
                     uint32_t quality) {
    if (format.m_codec == Codec::Ict)
        return IctEncoder(format, chroma, quality).EncodeUpdate(picture, nullptr);
    return LbeEncoder(format, chroma, quality).EncodeUpdate(picture, nullptr);
}

} // namespace

DecodingScene::DecodingScene(const Picture& picture, UpdateFormat format, ChromaSubsampling chroma,
                             uint32_t quality, unsigned long threads)
    : m_Update(Encode(picture, format, chroma, quality)),
      m_vuiFramebuffer(picture.m_uiWidth * picture.m_uiHeight),
      m_uiPixels(m_vuiFramebuffer.size()) {
    const auto width = static_cast<unsigned short>(picture.m_uiWidth);
    const auto height = static_cast<unsigned short>(picture.m_uiHeight);
    const auto subsampling = static_cast<unsigned int>(chroma);
    if (format.m_codec == Codec::Ict)
        m_pDecoder = std::make_unique<ImageDecoderIct>(&m_Renderer, &m_Stream, &m_Logger, threads,
                                                       format.m_uiProtocolVersion, subsampling);
    else
        m_pDecoder = std::make_unique<ImageDecoderLbe>(&m_Renderer, &m_Stream, &m_Logger, threads,
                                                       format.m_uiProtocolVersion, subsampling);
    m_pDecoder->SetResolution(width, height);
    m_Renderer.SetFramebufferSize(width, height, false);
    m_Renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(m_vuiFramebuffer.data()));
}

void DecodingScene::DecodeUpdate() {
    m_Stream.Offer(m_Update.m_vuiPayload);
    const UpdateRectangle& rectangle = m_Update.m_rectangle;
    m_pDecoder->HandleUpdate(m_Update.m_uiQuality, 0, rectangle.m_uiX, rectangle.m_uiY,
                             rectangle.m_uiWidth, rectangle.m_uiHeight);
}

double DecodingScene::BitsPerPixel() const {
    return 8.0 * static_cast<double>(m_Update.m_vuiPayload.size()) /
           static_cast<double>(m_uiPixels);
}

} // namespace Vostrel::bench
