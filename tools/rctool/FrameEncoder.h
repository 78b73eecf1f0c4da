#pragma once

#include "tools/Picture.h"
#include "tools/UpdateEncoder.h"
#include "tools/rctool/Recorder.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Vostrel::rctool {

/// The codecs and formats that are asked for; what is not follows from the recording.
struct FormatRequest {
    std::vector<streamencoder::Codec> m_vCodecs; ///< for the frames in turn
    std::optional<uint8_t> m_protocol;
    std::optional<streamencoder::ChromaSubsampling> m_chroma;
    std::optional<streamencoder::RecordLayout> m_layout;
    std::optional<uint32_t> m_quality;
};

/// The format of decoder 0 of a new recording.
recording::DecoderFormat FirstFormat(const FormatRequest& request);

/// Throws std::invalid_argument for a quality that a codec of a new recording does not have.
void CheckQuality(const FormatRequest& request);

/// What of a frame becomes its update.
struct FrameArea {
    std::optional<libimagedecoder::UpdateRectangle> m_rectangle; ///< this part alone
    bool m_bChangedOnly = false; ///< the smallest rectangle that changed, if anything did
};

/// Encodes frames into a recording.
class FrameEncoder {
public:
    /// Adds the decoders that the recording lacks. Throws std::invalid_argument for a quality out
    /// of range, and what the recorder throws. The recorder must outlive the encoder.
    FrameEncoder(Recorder& recorder, const FormatRequest& request, const FrameArea& area);

    /// Encodes a frame and writes it at a time in microseconds. The first one, and one after a
    /// change of size, is coded whole. Returns nothing for one that made no update, as nothing
    /// changed. Throws std::runtime_error, which names the frame.
    std::optional<streamencoder::EncodedUpdate>
    Write(const std::string& frame, streamencoder::Picture picture, uint64_t time, bool checked);

private:
    /// An encoder for one of the recording's decoders.
    struct Stream {
        uint8_t m_uiDecoder;
        std::unique_ptr<streamencoder::UpdateEncoder> m_pEncoder;
    };

    Stream MakeStream(std::optional<streamencoder::Codec> codec, const FormatRequest& request);
    std::optional<libimagedecoder::UpdateRectangle>
    AreaOf(const streamencoder::Picture& picture) const;
    void UseSize(const streamencoder::PictureSize& size);

    Recorder& m_recorder;
    FrameArea m_area;
    std::vector<Stream> m_vStreams;
    size_t m_uiFrames = 0;
    std::optional<streamencoder::Picture> m_previous;
};

} // namespace Vostrel::rctool
