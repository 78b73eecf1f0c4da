#include "tests/model/CaseFile.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <zlib.h>

namespace Vostrel::model {

namespace {

/// Takes little-endian fields from the front of a file.
class Fields {
public:
    explicit Fields(std::span<const uint8_t> bytes) : m_Bytes(bytes) {}

    std::span<const uint8_t> Bytes(size_t count) {
        if (count > m_Bytes.size())
            throw std::runtime_error("case file is cut short");
        const auto taken = m_Bytes.first(count);
        m_Bytes = m_Bytes.subspan(count);
        return taken;
    }

    uint64_t Number(size_t bytes) {
        uint64_t value = 0;
        size_t shift = 0;
        for (const uint8_t byte : Bytes(bytes)) {
            value |= uint64_t{byte} << shift;
            shift += 8;
        }
        return value;
    }

    uint8_t U8(uint64_t largest = 255) {
        const uint64_t value = Number(1);
        if (value > largest)
            throw std::runtime_error("case file has a field out of range");
        return static_cast<uint8_t>(value);
    }

    uint16_t U16() { return static_cast<uint16_t>(Number(2)); }
    uint32_t U32() { return static_cast<uint32_t>(Number(4)); }
    bool AtEnd() const { return m_Bytes.empty(); }

private:
    std::span<const uint8_t> m_Bytes;
};

CaseUpdate ParseUpdate(Fields& fields) {
    CaseUpdate update{};
    update.quality = fields.U32();
    update.x = fields.U16();
    update.y = fields.U16();
    update.w = fields.U16();
    update.h = fields.U16();
    const auto stream = fields.Bytes(fields.U32());
    update.stream.assign(stream.begin(), stream.end());
    const auto error = fields.Bytes(fields.U8());
    update.error.assign(error.begin(), error.end());
    update.result = static_cast<int64_t>(fields.Number(8));
    update.consumed = fields.U32();
    update.crcAccelerated = fields.U32();
    update.crcPortable = fields.U32();
    return update;
}

} // namespace

size_t CaseLife::PieceCapacity(const CaseUpdate& update) const {
    if (chunkExponent == 0)
        return std::max<size_t>(1, update.stream.size());
    return size_t{1} << (chunkExponent - 1);
}

CaseLife ParseCase(std::span<const uint8_t> bytes) {
    Fields fields(bytes);
    const auto magic = fields.Bytes(4);
    if (std::string(magic.begin(), magic.end()) != "RCV1")
        throw std::runtime_error("not a case file");
    CaseLife life{};
    life.codec = fields.U8(1);
    life.version = fields.U8(2);
    life.chroma = fields.U8(2);
    life.threads = fields.U8();
    life.contrast = fields.U8(100);
    life.postproc = fields.U8(1) == 1;
    life.sink = fields.U8(1);
    life.chunkExponent = fields.U8(31);
    life.fbWidth = fields.U16();
    life.fbHeight = fields.U16();
    const uint32_t updates = fields.U32();
    for (uint32_t i = 0; i < updates; ++i)
        life.updates.push_back(ParseUpdate(fields));
    if (!fields.AtEnd())
        throw std::runtime_error("case file goes on behind its last update");
    return life;
}

CaseLife ReadCaseFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot open " + path.string());
    const std::vector<char> content((std::istreambuf_iterator<char>(file)),
                                    std::istreambuf_iterator<char>());
    const std::vector<uint8_t> bytes(content.begin(), content.end());
    return ParseCase(bytes);
}

std::vector<std::filesystem::path> ListCaseFiles() {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(TEST_DATA_DIR "/cases"))
        if (entry.path().extension() == ".case")
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string CaseTestName(const std::filesystem::path& path) {
    std::string name = path.stem().string();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

uint32_t Crc32(std::span<const uint8_t> bytes) {
    return static_cast<uint32_t>(crc32_z(0, bytes.data(), bytes.size()));
}

} // namespace Vostrel::model
