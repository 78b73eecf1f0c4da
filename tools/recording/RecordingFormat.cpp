#include "tools/recording/RecordingFormat.h"

#include <zlib.h>

namespace Vostrel::recording {

uint32_t Crc32(std::span<const uint8_t> bytes) {
    return static_cast<uint32_t>(crc32_z(0, bytes.data(), bytes.size()));
}

void PutFormat(ByteSink& sink, const DecoderFormat& format) {
    sink.Put(format.m_codec);
    sink.Put(format.m_uiProtocolVersion);
    sink.Put(format.m_chroma);
    sink.Put(format.m_layout);
}

DecoderFormat GetFormat(ByteSource& source) {
    DecoderFormat format;
    format.m_codec = source.GetUpTo(Codec::Lbe);
    format.m_uiProtocolVersion = source.GetUpTo(uint8_t{2});
    format.m_chroma = source.GetUpTo(ChromaSubsampling::Yuv444);
    format.m_layout = source.GetUpTo(RecordLayout::InPlace);
    return format;
}

void PutSettings(ByteSink& sink, const Settings& settings) {
    sink.Put(settings.m_uiWidth);
    sink.Put(settings.m_uiHeight);
    sink.Put(settings.m_uiContrast);
    sink.Put(uint8_t{settings.m_bPostprocessing});
    sink.Put(settings.m_sink);
    sink.Put(settings.m_kernels);
}

Settings GetSettings(ByteSource& source) {
    Settings settings;
    settings.m_uiWidth = source.Get<uint16_t>();
    settings.m_uiHeight = source.Get<uint16_t>();
    settings.m_uiContrast = source.GetUpTo(uint8_t{100});
    settings.m_bPostprocessing = source.GetUpTo(uint8_t{1}) != 0;
    settings.m_sink = source.GetUpTo(Sink::Planes);
    settings.m_kernels = source.GetUpTo(KernelRule::Portable);
    if (settings.m_uiWidth == 0 || settings.m_uiHeight == 0)
        throw BadRecord("the framebuffer has no pixels");
    return settings;
}

} // namespace Vostrel::recording
