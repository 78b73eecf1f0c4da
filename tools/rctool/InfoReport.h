#pragma once

#include "tools/recording/RecordingReader.h"
#include "tools/walker/StreamStatistics.h"
#include "tools/walker/StreamWalker.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Vostrel::rctool {

/// What the updates of one decoder are made of.
struct DecoderReport {
    recording::DecoderFormat m_format;
    size_t m_uiUpdates = 0;
    walker::StreamStatistics m_statistics;
};

/// What is reported of a recording.
struct InfoReport {
    uint16_t m_uiFileVersion = 0;
    recording::Header m_header;
    std::vector<DecoderReport> m_vDecoders; ///< by their index
    recording::RecordingEnd m_end;
    bool m_bIndexed = false;
    size_t m_uiUpdates = 0;
    size_t m_uiPayloadBytes = 0;
    uint64_t m_uiLastTime = 0; ///< microseconds
    size_t m_uiChecksums = 0;
    size_t m_uiRecordedFailures = 0;
    size_t m_uiUnexpectedFailures = 0; ///< updates that fail and did not when they were recorded
    size_t m_uiSettingsChanges = 0;
    size_t m_uiPictures = 0;
    std::vector<std::string> m_vNotes;
    std::map<uint32_t, size_t> m_qualities; ///< updates of each quality

    /// Of all decoders.
    walker::StreamStatistics Total() const;
};

/// Write to the standard output.
void PrintText(const InfoReport& report);
void PrintJson(const InfoReport& report);

} // namespace Vostrel::rctool
