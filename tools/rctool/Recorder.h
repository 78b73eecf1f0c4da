#pragma once

#include "tools/rctool/FileLock.h"
#include "tools/recording/Player.h"
#include "tools/recording/RecordingReader.h"
#include "tools/recording/RecordingWriter.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Vostrel::rctool {

/// Records updates with what a decoder makes of them.
class Recorder {
public:
    /// Begins a recording in a file that is open for writing. Throws RecordingError with the path.
    Recorder(std::FILE* file, const std::string& path, const recording::Header& header);

    /// Goes on with a recording, which is played to its end. Throws std::runtime_error for one that
    /// is being written by another program, and for one that is cut or damaged, unless what is not
    /// good of it may be dropped.
    Recorder(const std::string& path, bool dropRest);

    /// Takes back what was added to an older recording, unless it was closed.
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Its settings are those that hold for the next update.
    const recording::Header& GetHeader() const { return m_header; }

    /// Of the last update in microseconds; nothing before the first.
    std::optional<uint64_t> GetTime() const { return m_time; }

    /// How many updates were recorded here, after those that an older recording had.
    size_t GetAdded() const { return m_uiAdded; }

    /// The decoders that updates can be for, by their index.
    const std::vector<recording::DecoderFormat>& GetDecoders() const { return m_vDecoders; }

    /// Describes a further decoder and returns its index. Throws RecordingError for a recording of
    /// version 1, which holds one alone, and when there are MaxDecoders.
    uint8_t AddDecoder(recording::DecoderFormat format);

    /// Changes the settings from here on.
    void Use(const recording::Settings& settings);

    /// Records an update for a decoder at a time in microseconds. checked: with the decoder's
    /// result and a checksum of the picture. Throws RecordingError, also for an update that cannot
    /// be decoded.
    void Write(const recording::EncodedUpdate& encoded, uint8_t decoder, uint64_t time,
               bool checked);

    void Close();

private:
    std::vector<recording::IndexEntry> PlayAll(recording::RecordingReader& reader);
    void AddChecksum(recording::RecordedUpdate& update);

    std::string m_path;
    FileLock m_lock; ///< of an older recording
    recording::Header m_header;
    std::vector<recording::DecoderFormat> m_vDecoders;
    std::optional<uint64_t> m_time;
    size_t m_uiAdded = 0;
    std::optional<uint64_t> m_oldEnd; ///< of an older recording that is not closed again yet
    std::unique_ptr<recording::Player> m_pPlayer;
    std::unique_ptr<recording::RecordingWriter> m_pWriter;
};

} // namespace Vostrel::rctool
