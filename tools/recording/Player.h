#pragma once

#include "tools/recording/Framebuffer.h"
#include "tools/recording/Kernels.h"
#include "tools/recording/PlayedDecoder.h"
#include "tools/recording/Recording.h"

#include <memory>
#include <optional>
#include <vector>

namespace Vostrel::recording {

/// What a player draws into.
enum class Target {
    AsRecorded,   ///< the recording's sink, whose checksums then hold
    Argb,         ///< an ARGB32 framebuffer
    ScreenPlanes, ///< the decoded samples at their place on the screen; for ICT
};

struct PlayerOptions {
    std::optional<unsigned> m_threads; ///< those that the record layout wants without it, 0..1024
    std::optional<KernelLevel> m_kernels; ///< the fastest of the recorded rule without it
    Target m_target = Target::AsRecorded;
};

/// Decodes the updates of a recording with the library, as a viewer does: one decoder for each that
/// the recording describes, one framebuffer for all of them.
class Player {
public:
    /// Throws std::invalid_argument for options that do not go with the recording, RecordingError
    /// for a framebuffer that is too large, or of planes that a decoder cannot draw into.
    Player(const Header& header, const PlayerOptions& options);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    /// Throws std::out_of_range for an update of a decoder that was not added, which a reader never
    /// delivers.
    PlayedUpdate Play(const RecordedUpdate& update);

    /// Throws as the constructor does.
    void Apply(const Settings& settings);

    /// Throws RecordingError for a picture of another size, which a reader never delivers, and for
    /// one of another sink than is drawn into.
    void Apply(const RecordedPicture& picture);

    /// Adds a decoder with the next index. Throws as the constructor does.
    void Apply(const AddedDecoder& decoder);

    const Framebuffer& GetFramebuffer() const { return m_framebuffer; }
    const KernelLevel& GetKernels() const { return m_kernels; }

    /// Of decoder 0.
    unsigned GetThreads() const { return m_uiThreads; }

private:
    Settings Drawn(Settings settings) const;
    void CheckSink(const DecoderFormat& format, const Settings& settings) const;
    [[noreturn]] void RefusePlanes(const char* reason) const;
    void AddDecoder(const DecoderFormat& format, unsigned threads);

    ChromaSubsampling m_chroma; ///< of plane framebuffers
    PlayerOptions m_options;
    Settings m_settings;
    unsigned m_uiThreads;
    KernelLevel m_kernels;
    Framebuffer m_framebuffer;
    std::vector<std::unique_ptr<PlayedDecoder>> m_vDecoders;
};

} // namespace Vostrel::recording
