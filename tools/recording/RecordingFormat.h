#pragma once

#include "tools/recording/Recording.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The bytes of recordings that reader and writer share.
namespace Vostrel::recording {

using namespace std::string_view_literals;

constexpr std::string_view FileMagic = "RCREC\r\n\x1A"sv;
constexpr std::string_view RecordMagic = "RCR"sv;
constexpr uint16_t FirstFileVersion = 1; ///< one decoder only
constexpr uint16_t FileVersion = 2;      ///< that is written
constexpr uint16_t HeaderSize = 40;
constexpr size_t FixedHeaderSize = 12; ///< magic, file version and header size
constexpr size_t RecordHeadSize = 8;   ///< magic, type and body size
constexpr size_t CrcSize = 4;
constexpr uint64_t SmallestRecord = RecordHeadSize + CrcSize;
constexpr uint16_t FirstUpdateFieldsSize = 36; ///< in version 1
constexpr uint16_t UpdateFieldsSize = 40;
constexpr uint16_t PictureFieldsSize = 8;
constexpr size_t IndexEntrySize = 16;
constexpr size_t UpdateFillingSize = 3;  ///< zeros after the decoder of an update
constexpr size_t DecoderFillingSize = 3; ///< zeros after the layout of a decoder
constexpr uint8_t ResultKnown = 1;       ///< flag of an update

enum class RecordType : uint8_t {
    Update = 1,
    Settings = 2,
    Picture = 3,
    Decoder = 4, ///< from version 2 on
    Index = 128,
    Note = 129
};

/// Readers may pass over records of types that they do not know from here on.
constexpr uint8_t FirstSkippableType = 128;

enum class Compression : uint8_t { None = 0, Zlib = 1 };

uint32_t Crc32(std::span<const uint8_t> bytes);

/// Collects little-endian numbers.
class ByteSink {
public:
    template <class Number>
    void Put(Number number) {
        for (size_t i = 0; i < sizeof(Number); ++i)
            m_vuiBytes.push_back(static_cast<uint8_t>(static_cast<uint64_t>(number) >> 8 * i));
    }

    void PutBytes(std::span<const uint8_t> bytes) {
        m_vuiBytes.insert(m_vuiBytes.end(), bytes.begin(), bytes.end());
    }

    void PutText(std::string_view text) {
        for (const char character : text)
            Put(static_cast<uint8_t>(character));
    }

    void PutCrcOfAll() { Put(Crc32(m_vuiBytes)); }

    void PutZeros(size_t count) { m_vuiBytes.insert(m_vuiBytes.end(), count, 0); }
    const std::vector<uint8_t>& GetBytes() const { return m_vuiBytes; }

private:
    std::vector<uint8_t> m_vuiBytes;
};

/// Takes little-endian numbers; throws BadRecord behind the end.
class ByteSource {
public:
    explicit ByteSource(std::span<const uint8_t> bytes) : m_bytes(bytes) {}

    template <class Number>
    Number Get() {
        uint64_t number = 0;
        size_t shift = 0;
        for (const uint8_t byte : GetBytes(sizeof(Number))) {
            number |= static_cast<uint64_t>(byte) << shift;
            shift += 8;
        }
        return static_cast<Number>(number);
    }

    /// A number that must not exceed last.
    template <class Value>
    Value GetUpTo(Value last) {
        const auto number = Get<uint8_t>();
        if (number > static_cast<uint8_t>(last))
            throw BadRecord("a field is out of range");
        return static_cast<Value>(number);
    }

    std::span<const uint8_t> GetBytes(size_t count) {
        if (count > m_bytes.size())
            throw BadRecord("a record is too short for its fields");
        const auto taken = m_bytes.first(count);
        m_bytes = m_bytes.subspan(count);
        return taken;
    }

    std::span<const uint8_t> GetRest() { return GetBytes(m_bytes.size()); }

private:
    std::span<const uint8_t> m_bytes;
};

/// Codec, protocol version, chroma and layout.
void PutFormat(ByteSink& sink, const DecoderFormat& format);

/// Takes the same. Throws BadRecord for values out of range.
DecoderFormat GetFormat(ByteSource& source);

void PutSettings(ByteSink& sink, const Settings& settings);

/// Takes the fields of settings. Throws BadRecord for values out of range.
Settings GetSettings(ByteSource& source);

} // namespace Vostrel::recording
