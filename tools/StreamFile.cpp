#include "tools/StreamFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace Vostrel::streamencoder {

namespace {

constexpr std::array<char, 4> Magic{'R', 'C', 'S', 'T'};
constexpr uint16_t FileVersion = 1;
constexpr uint16_t HeaderSize = 22;
constexpr uint16_t UpdateHeaderSize = 16;
constexpr uint32_t UntilEndOfFile = 0xFFFFFFFF;

/// Writes little-endian numbers.
class NumberWriter {
public:
    explicit NumberWriter(std::ostream& out) : m_out(out) {}

    template <class Number>
    void Put(Number number) {
        for (size_t i = 0; i < sizeof(Number); ++i) {
            m_out.put(static_cast<char>(static_cast<uint64_t>(number) >> 8 * i & 0xFF));
        }
    }

private:
    std::ostream& m_out;
};

/// Reads little-endian numbers from a part of the file that must be complete.
class NumberReader {
public:
    explicit NumberReader(std::istream& in) : m_in(in) {}

    template <class Number>
    Number Get() {
        uint64_t number = 0;
        for (size_t i = 0; i < sizeof(Number); ++i) {
            number |= static_cast<uint64_t>(GetByte()) << 8 * i;
        }
        return static_cast<Number>(number);
    }

    std::vector<uint8_t> GetBytes(uint32_t count) {
        // The count is not to be trusted with memory before the bytes are seen.
        constexpr uint32_t Piece = 1U << 20;
        std::vector<uint8_t> bytes;
        while (bytes.size() < count) {
            const size_t done = bytes.size();
            bytes.resize(done + std::min<size_t>(Piece, count - done));
            m_in.read(reinterpret_cast<char*>(&bytes[done]),
                      static_cast<std::streamsize>(bytes.size() - done));
            if (!m_in)
                throw std::runtime_error("The stream file ends too early");
        }
        return bytes;
    }

    void Skip(size_t count) {
        for (; count > 0; --count) {
            GetByte();
        }
    }

private:
    uint8_t GetByte() {
        const int byte = m_in.get();
        if (byte == std::istream::traits_type::eof())
            throw std::runtime_error("The stream file ends too early");
        return static_cast<uint8_t>(byte);
    }

    std::istream& m_in;
};

/// The header fields that describe the file rather than its updates.
struct FileLayout {
    uint16_t m_uiUpdateHeaderSize;
    uint32_t m_uiUpdateCount;
};

void CheckMagic(std::istream& in) {
    std::array<char, 4> magic{};
    in.read(magic.data(), magic.size());
    if (!in || magic != Magic)
        throw std::runtime_error("This is no stream file");
}

template <class Enum>
Enum CheckedEnum(uint8_t number, Enum last, const char* name) {
    if (number > static_cast<uint8_t>(last))
        throw std::runtime_error(std::string("Unknown ") + name + " in the stream file");
    return static_cast<Enum>(number);
}

FileLayout ReadHeader(std::istream& in, StreamHeader& header) {
    CheckMagic(in);
    NumberReader numbers(in);
    if (numbers.Get<uint16_t>() != FileVersion)
        throw std::runtime_error("The stream file has a version that this program does not know");
    const auto headerSize = numbers.Get<uint16_t>();
    const auto updateHeaderSize = numbers.Get<uint16_t>();
    if (headerSize < HeaderSize || updateHeaderSize < UpdateHeaderSize)
        throw std::runtime_error("The stream file's headers are too short");

    header.m_codec = CheckedEnum(numbers.Get<uint8_t>(), Codec::Lbe, "codec");
    header.m_uiProtocolVersion = numbers.Get<uint8_t>();
    if (header.m_uiProtocolVersion > 2)
        throw std::runtime_error("Unknown protocol version in the stream file");
    header.m_chroma =
        CheckedEnum(numbers.Get<uint8_t>(), ChromaSubsampling::Yuv444, "chroma subsampling");
    header.m_layout = CheckedEnum(numbers.Get<uint8_t>(), RecordLayout::InPlace, "record layout");
    header.m_uiWidth = numbers.Get<uint16_t>();
    header.m_uiHeight = numbers.Get<uint16_t>();
    const auto updateCount = numbers.Get<uint32_t>();
    numbers.Skip(headerSize - HeaderSize);
    return {updateHeaderSize, updateCount};
}

EncodedUpdate ReadUpdate(std::istream& in, uint16_t updateHeaderSize) {
    NumberReader numbers(in);
    EncodedUpdate update;
    update.m_uiQuality = numbers.Get<uint32_t>();
    update.m_rectangle.m_uiX = numbers.Get<uint16_t>();
    update.m_rectangle.m_uiY = numbers.Get<uint16_t>();
    update.m_rectangle.m_uiWidth = numbers.Get<uint16_t>();
    update.m_rectangle.m_uiHeight = numbers.Get<uint16_t>();
    const auto payloadSize = numbers.Get<uint32_t>();
    numbers.Skip(updateHeaderSize - UpdateHeaderSize);
    update.m_vuiPayload = numbers.GetBytes(payloadSize);
    return update;
}

bool AtEnd(std::istream& in) {
    return in.peek() == std::istream::traits_type::eof();
}

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error(path + ": " + reason);
}

} // namespace

void WriteStreamFile(std::ostream& out, const StreamFile& file) {
    NumberWriter numbers(out);
    out.write(Magic.data(), Magic.size());
    numbers.Put(FileVersion);
    numbers.Put(HeaderSize);
    numbers.Put(UpdateHeaderSize);
    numbers.Put(file.m_header.m_codec);
    numbers.Put(file.m_header.m_uiProtocolVersion);
    numbers.Put(file.m_header.m_chroma);
    numbers.Put(file.m_header.m_layout);
    numbers.Put(file.m_header.m_uiWidth);
    numbers.Put(file.m_header.m_uiHeight);
    numbers.Put(static_cast<uint32_t>(file.m_vUpdates.size()));

    for (const EncodedUpdate& update : file.m_vUpdates) {
        numbers.Put(update.m_uiQuality);
        numbers.Put(update.m_rectangle.m_uiX);
        numbers.Put(update.m_rectangle.m_uiY);
        numbers.Put(update.m_rectangle.m_uiWidth);
        numbers.Put(update.m_rectangle.m_uiHeight);
        numbers.Put(static_cast<uint32_t>(update.m_vuiPayload.size()));
        out.write(reinterpret_cast<const char*>(update.m_vuiPayload.data()),
                  static_cast<std::streamsize>(update.m_vuiPayload.size()));
    }
}

StreamFile ReadStreamFile(std::istream& in) {
    StreamFile file;
    const FileLayout layout = ReadHeader(in, file.m_header);
    while (layout.m_uiUpdateCount == UntilEndOfFile
               ? !AtEnd(in)
               : file.m_vUpdates.size() < layout.m_uiUpdateCount) {
        file.m_vUpdates.push_back(ReadUpdate(in, layout.m_uiUpdateHeaderSize));
    }
    return file;
}

void WriteStreamFile(const std::string& path, const StreamFile& file) {
    std::ofstream out(path, std::ios::binary);
    if (!out)
        Fail(path, std::strerror(errno));
    WriteStreamFile(out, file);
    out.close();
    if (!out)
        Fail(path, "The file could not be written");
}

StreamFile ReadStreamFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        Fail(path, std::strerror(errno));
    try {
        return ReadStreamFile(in);
    } catch (const std::runtime_error& error) {
        Fail(path, error.what());
    }
}

} // namespace Vostrel::streamencoder
