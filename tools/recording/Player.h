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
#include <optional>
#include <string>

namespace Vostrel::recording {

/// What a player draws into.
enum class Target {
    AsRecorded,   ///< the recording's sink, whose checksums then hold
    Argb,         ///< an ARGB32 framebuffer
    ScreenPlanes, ///< the decoded samples at their place on the screen; for ICT
};

struct PlayerOptions {
    std::optional<unsigned> m_threads; ///< those that the record layout wants without it, 0..1024
    std::optional<KernelVariant> m_kernels; ///< the fastest of the recorded rule without it
    Target m_target = Target::AsRecorded;
};

/// What came of an update.
struct PlayedUpdate {
    uint64_t m_uiResult;        ///< of the decoder; FailedResult for a failure
    std::string m_failure;      ///< empty without one
    uint64_t m_uiConsumedBytes; ///< of the payload; all of it when the update failed
};

/// Decodes the updates of a recording with the library, as a viewer does.
class Player {
public:
    /// Throws std::invalid_argument for options that do not go with the recording, RecordingError
    /// for a framebuffer that is too large.
    Player(const Header& header, const PlayerOptions& options);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    PlayedUpdate Play(const EncodedUpdate& update);

    /// Throws as the constructor does.
    void Apply(const Settings& settings);

    /// Throws RecordingError for a picture of another size, which a reader never delivers, and for
    /// one of another sink than is drawn into.
    void Apply(const RecordedPicture& picture);

    const Framebuffer& GetFramebuffer() const { return m_framebuffer; }
    unsigned GetThreads() const { return m_uiThreads; }
    KernelVariant GetKernels() const { return m_kernels; }

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

    Settings Drawn(Settings settings) const;
    void UseSettings();
    void AimAtFramebuffer();
    uint64_t Decode(const EncodedUpdate& update);
    uint64_t DecodeOntoScreenPlanes(const EncodedUpdate& update);

    Codec m_codec;
    ChromaSubsampling m_chroma;
    Target m_target;
    Settings m_settings;
    unsigned m_uiThreads;
    KernelVariant m_kernels;
    SilentLogger m_logger;
    UpdateStream m_stream{&m_logger};
    Framebuffer m_framebuffer;
    libimagedecoder::ImageDecoderRenderer m_renderer;
    std::unique_ptr<libimagedecoder::IImageDecoder> m_pDecoder;
};

} // namespace Vostrel::recording
