#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace Vostrel::model {

/// One update of a case file, with what must come of it.
struct CaseUpdate {
    uint32_t quality;
    uint16_t x;
    uint16_t y;
    uint16_t w;
    uint16_t h;
    std::vector<uint8_t> stream; ///< the update's data, possibly with bytes of the next message
    std::string error;           ///< empty without one
    int64_t result;
    uint32_t consumed; ///< bytes delivered and not handed back, or NotCompared
    uint32_t crcAccelerated;
    uint32_t crcPortable;

    static constexpr uint32_t NotCompared = 0xFFFFFFFF;
};

/// One decoder life: a renderer, a decoder and their updates.
struct CaseLife {
    uint8_t codec;   ///< 0 ICT, 1 LBE
    uint8_t version; ///< protocol version 0..2
    uint8_t chroma;  ///< 0 4:2:0, 1 4:2:2, 2 4:4:4
    uint8_t threads;
    uint8_t contrast; ///< level 0..100
    bool postproc;
    uint8_t sink;          ///< 0 ARGB framebuffer, 1 three plane framebuffers
    uint8_t chunkExponent; ///< 0: one piece for the whole stream; n: pieces of 2^(n-1) bytes
    uint16_t fbWidth;
    uint16_t fbHeight;
    std::vector<CaseUpdate> updates;

    /// Size of the transfer array that an update of this life is read through.
    size_t PieceCapacity(const CaseUpdate& update) const;
};

/// Reads a case file; throws std::runtime_error when it is cut short, too long or out of range.
CaseLife ReadCaseFile(const std::filesystem::path& path);

/// The same from memory.
CaseLife ParseCase(std::span<const uint8_t> bytes);

/// The project's case files in the order of their names.
std::vector<std::filesystem::path> ListCaseFiles();

/// A case file's name as the name of a test.
std::string CaseTestName(const std::filesystem::path& path);

/// zlib's CRC-32.
uint32_t Crc32(std::span<const uint8_t> bytes);

} // namespace Vostrel::model
