#pragma once

#include "tests/model/CaseFile.h"
#include "tools/recording/RecordingReader.h"
#include "tools/recording/RecordingWriter.h"

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

/// Recordings in memory, and records made by hand.
namespace Vostrel::recording {

using Bytes = std::vector<uint8_t>;

/// A header of file version 1, an update and an index.
inline const Bytes ExampleHeader{0x52, 0x43, 0x52, 0x45, 0x43, 0x0d, 0x0a, 0x1a, 0x01, 0x00,
                                 0x28, 0x00, 0x00, 0x02, 0x00, 0x01, 0x10, 0x00, 0x10, 0x00,
                                 0x00, 0x00, 0x00, 0x00, 0x00, 0x40, 0x1e, 0x18, 0x24, 0x0a,
                                 0x06, 0x00, 0x02, 0x00, 0x00, 0x00, 0x59, 0xd4, 0x8d, 0x8a};
inline const Bytes ExampleUpdate{0x52, 0x43, 0x52, 0x01, 0x27, 0x00, 0x00, 0x00, 0x24, 0x00, 0x01,
                                 0x01, 0x0a, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                 0x10, 0x00, 0xc4, 0x09, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                                 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x2e, 0xaf, 0xb5, 0xef,
                                 0xff, 0xff, 0xc0, 0x68, 0xa7, 0x74, 0xff};
inline const Bytes ExampleIndex{0x52, 0x43, 0x52, 0x80, 0x1c, 0x00, 0x00, 0x00, 0x01, 0x00,
                                0x00, 0x00, 0x28, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                                0xc4, 0x09, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x5b, 0x00,
                                0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xca, 0xdc, 0x69, 0xde};

inline Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// Bytes of a part of a file followed by their CRC, by the tests' own CRC.
inline Bytes WithCrc(Bytes bytes) {
    const uint32_t crc = model::Crc32(bytes);
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<uint8_t>(crc >> shift));
    return bytes;
}

inline Bytes RecordOf(uint8_t type, const Bytes& body) {
    return WithCrc(Bytes{'R', 'C', 'R', type, static_cast<uint8_t>(body.size()), 0, 0, 0} + body);
}

inline RecordingReader ReaderOf(const Bytes& bytes) {
    return RecordingReader(
        std::make_unique<std::istringstream>(std::string(bytes.begin(), bytes.end())));
}

inline std::vector<Record> ReadAll(RecordingReader& reader) {
    std::vector<Record> records;
    while (auto record = reader.Next())
        records.push_back(std::move(*record));
    return records;
}

inline std::string ReasonOfRefusal(const Bytes& bytes) {
    try {
        ReaderOf(bytes);
    } catch (const RecordingError& error) {
        return error.what();
    }
    return "";
}

inline Header SampleHeader() {
    Header header;
    header.m_settings.m_uiWidth = header.m_settings.m_uiHeight = 16;
    header.m_uiStartTime = 1'700'000'000'000'000;
    header.m_uiThreads = 2;
    return header;
}

inline RecordedUpdate SampleUpdate() {
    RecordedUpdate update;
    update.m_encoded = {10, {0, 0, 16, 16}, {0xFF, 0xFF, 0xC0}};
    update.m_uiTime = 2500;
    update.m_result = 0;
    update.m_coverage = Coverage::Framebuffer;
    update.m_uiPictureCrc = 0xEFB5AF2E;
    return update;
}

/// A file in memory that outlives its writer.
class MemoryFile {
public:
    explicit MemoryFile(const Header& header) : m_writer(MakeStream(), header) {}

    RecordingWriter& Writer() { return m_writer; }
    Bytes GetBytes() const {
        const std::string text = m_pStream->str();
        return {text.begin(), text.end()};
    }

private:
    std::unique_ptr<std::ostream> MakeStream() {
        auto stream = std::make_unique<std::ostringstream>();
        m_pStream = stream.get();
        return stream;
    }

    std::ostringstream* m_pStream = nullptr;
    RecordingWriter m_writer;
};

} // namespace Vostrel::recording
