#pragma once

#include "libimagedecoder/IImageDecoder.h"
#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/StreambufferArray.h"
#include "tools/recording/Framebuffer.h"
#include "tools/recording/Kernels.h"
#include "tools/recording/Recording.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Vostrel::recording {

/// What came of an update.
struct PlayedUpdate {
    uint64_t m_uiResult;        ///< of the decoder; FailedResult for a failure
    std::string m_failure;      ///< empty without one
    uint64_t m_uiConsumedBytes; ///< of the payload; all of it when the update failed
};

/// One of the library's decoders with its stream and its renderer, which draws into a framebuffer
/// that it shares with others.
class PlayedDecoder {
public:
    /// threads: 0..1024. kernels: that this processor can run.
    PlayedDecoder(const DecoderFormat& format, unsigned threads, const KernelLevel& kernels);
    ~PlayedDecoder();
    PlayedDecoder(const PlayedDecoder&) = delete;
    PlayedDecoder& operator=(const PlayedDecoder&) = delete;

    const DecoderFormat& GetFormat() const { return m_format; }

    /// The framebuffer must outlive the next update, at its place.
    void UseSettings(const Settings& settings, Framebuffer& framebuffer);

    PlayedUpdate Play(const EncodedUpdate& update);

    /// Draws a whole update at its place of a framebuffer of planes, which the decoder does not do
    /// by itself. The settings are those of that framebuffer.
    PlayedUpdate PlayOntoScreenPlanes(const EncodedUpdate& update, const Settings& settings,
                                      Framebuffer& screen);

private:
    class SilentLogger : public libimagedecoder::ILogger {
    public:
        void LogInternal(const char*) override {}
    };

    /// A stream that gets the bytes of one update after the other.
    class UpdateStream : public libimagedecoder::StreambufferArray {
    public:
        explicit UpdateStream(libimagedecoder::ILogger* logger)
            : StreambufferArray(logger, nullptr, 0) {}
        void SetPayload(const std::vector<uint8_t>& payload);
    };

    DecoderFormat m_format;
    SilentLogger m_logger;
    UpdateStream m_stream{&m_logger};
    libimagedecoder::ImageDecoderRenderer m_renderer;
    std::unique_ptr<libimagedecoder::IImageDecoder> m_pDecoder;
};

} // namespace Vostrel::recording
