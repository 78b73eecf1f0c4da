#include "tests/model/ModelTables.h"

#include <cmath>
#include <numeric>

namespace Vostrel::model {

namespace {

std::vector<int> Categories(int count) {
    std::vector<int> symbols(static_cast<size_t>(count));
    std::iota(symbols.begin(), symbols.end(), 0);
    return symbols;
}

// Annex K, tables K.3 to K.6: the numbers of codes of the lengths 1 to 16, and the AC symbols.
constexpr std::array<int, 16> DcLuminanceLengths{0, 1, 5, 1, 1, 1, 1, 1, 1, 1 /* abort marker */};
constexpr std::array<int, 16> DcChrominanceLengths{0, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1};
constexpr std::array<int, 16> AcLuminanceLengths{0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 125};
constexpr std::array<int, 16> AcChrominanceLengths{0, 2, 1, 2, 4, 4, 3, 4,
                                                   7, 5, 4, 4, 0, 1, 2, 119};
const std::vector<int> AcLuminanceSymbols{
    0x01, 0x02, 0x03, 0x00, 0x04, 0x11, 0x05, 0x12, 0x21, 0x31, 0x41, 0x06, 0x13, 0x51, 0x61,
    0x07, 0x22, 0x71, 0x14, 0x32, 0x81, 0x91, 0xa1, 0x08, 0x23, 0x42, 0xb1, 0xc1, 0x15, 0x52,
    0xd1, 0xf0, 0x24, 0x33, 0x62, 0x72, 0x82, 0x09, 0x0a, 0x16, 0x17, 0x18, 0x19, 0x1a, 0x25,
    0x26, 0x27, 0x28, 0x29, 0x2a, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3a, 0x43, 0x44, 0x45,
    0x46, 0x47, 0x48, 0x49, 0x4a, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5a, 0x63, 0x64,
    0x65, 0x66, 0x67, 0x68, 0x69, 0x6a, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7a, 0x83,
    0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8a, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99,
    0x9a, 0xa2, 0xa3, 0xa4, 0xa5, 0xa6, 0xa7, 0xa8, 0xa9, 0xaa, 0xb2, 0xb3, 0xb4, 0xb5, 0xb6,
    0xb7, 0xb8, 0xb9, 0xba, 0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xca, 0xd2, 0xd3,
    0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xda, 0xe1, 0xe2, 0xe3, 0xe4, 0xe5, 0xe6, 0xe7, 0xe8,
    0xe9, 0xea, 0xf1, 0xf2, 0xf3, 0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0xfa};
const std::vector<int> AcChrominanceSymbols{
    0x00, 0x01, 0x02, 0x03, 0x11, 0x04, 0x05, 0x21, 0x31, 0x06, 0x12, 0x41, 0x51, 0x07, 0x61,
    0x71, 0x13, 0x22, 0x32, 0x81, 0x08, 0x14, 0x42, 0x91, 0xa1, 0xb1, 0xc1, 0x09, 0x23, 0x33,
    0x52, 0xf0, 0x15, 0x62, 0x72, 0xd1, 0x0a, 0x16, 0x24, 0x34, 0xe1, 0x25, 0xf1, 0x17, 0x18,
    0x19, 0x1a, 0x26, 0x27, 0x28, 0x29, 0x2a, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3a, 0x43, 0x44,
    0x45, 0x46, 0x47, 0x48, 0x49, 0x4a, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5a, 0x63,
    0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6a, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7a,
    0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8a, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97,
    0x98, 0x99, 0x9a, 0xa2, 0xa3, 0xa4, 0xa5, 0xa6, 0xa7, 0xa8, 0xa9, 0xaa, 0xb2, 0xb3, 0xb4,
    0xb5, 0xb6, 0xb7, 0xb8, 0xb9, 0xba, 0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xca,
    0xd2, 0xd3, 0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xda, 0xe2, 0xe3, 0xe4, 0xe5, 0xe6, 0xe7,
    0xe8, 0xe9, 0xea, 0xf2, 0xf3, 0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0xfa};

// Annex K, tables K.1 and K.2.
constexpr std::array<int, 64> LumaQuantisers{
    16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
    14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
    18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
    49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
constexpr std::array<int, 64> ChromaQuantisers{
    17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99, 24, 26, 56, 99, 99, 99,
    99, 99, 47, 66, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};

struct QualityStep {
    double scale;
    int shift;
};
constexpr std::array<QualityStep, 16> QualitySteps{{{0.7, 3},
                                                    {0.5, 3},
                                                    {0.7, 2},
                                                    {0.5, 2},
                                                    {0.2, 3},
                                                    {0.7, 1},
                                                    {0.15, 3},
                                                    {0.5, 1},
                                                    {0.2, 2},
                                                    {0.7, 0},
                                                    {0.15, 2},
                                                    {0.5, 0},
                                                    {0.2, 1},
                                                    {0.15, 1},
                                                    {0.2, 0},
                                                    {0.15, 0}}};

// Reciprocals of the norms of the transform's basis vectors, by frequency. The first is a little
// off 1/sqrt(8): the encoders in the field calculate with this value.
constexpr std::array<double, 8> Norms{0.35355333390593, 0.047565149415,   0.158113883008,
                                      0.047565149415,   0.35355333390593, 0.047565149415,
                                      0.158113883008,   0.047565149415};

// 6 bits that the transform shifts out and 10 that the tile decoder does.
constexpr int FractionBits = 16;

TileTable Dequantisation(const std::array<int, 64>& quantisers, int level) {
    const QualityStep step = QualitySteps.at(static_cast<size_t>(level));
    TileTable table{};
    for (size_t row = 0; row < 8; ++row)
        for (size_t column = 0; column < 8; ++column)
            table[8 * row + column] =
                DequantisationValue(quantisers[8 * row + column], step.scale, step.shift,
                                    FractionBits, Norms[row] * Norms[column]);
    return table;
}

std::array<TileTable, 16> AllLevels(const std::array<int, 64>& quantisers) {
    std::array<TileTable, 16> tables{};
    for (size_t level = 0; level < tables.size(); ++level)
        tables[level] = Dequantisation(quantisers, static_cast<int>(level));
    return tables;
}

} // namespace

HuffmanTable::HuffmanTable(const std::array<int, 16>& codesOfLength,
                           const std::vector<int>& symbols) {
    int next = 0;
    size_t symbol = 0;
    for (int length = 1; length <= 16; ++length, next *= 2)
        for (int i = 0; i < codesOfLength[static_cast<size_t>(length - 1)]; ++i)
            m_vCodes.push_back({length, next++, symbols.at(symbol++)});

    // The codes are in rising order, and each takes up where the one before it ends.
    size_t index = 0;
    for (int peeked = 0; peeked < 1 << 16; ++peeked) {
        while (index + 1 < m_vCodes.size() &&
               peeked >> (16 - m_vCodes[index].length) != m_vCodes[index].bits)
            ++index;
        m_vCodeOf.push_back(index);
    }
}

int HuffmanTable::Decode(ModelBits& bits) const {
    const Code& code = m_vCodes[m_vCodeOf[static_cast<size_t>(bits.Peek16())]];
    bits.Drop(code.length);
    return code.symbol;
}

const HuffmanTable& DcLuminance() {
    static const HuffmanTable table(DcLuminanceLengths, Categories(13));
    return table;
}

const HuffmanTable& AcLuminance() {
    static const HuffmanTable table(AcLuminanceLengths, AcLuminanceSymbols);
    return table;
}

const HuffmanTable& DcChrominance() {
    static const HuffmanTable table(DcChrominanceLengths, Categories(12));
    return table;
}

const HuffmanTable& AcChrominance() {
    static const HuffmanTable table(AcChrominanceLengths, AcChrominanceSymbols);
    return table;
}

const std::array<int, 64>& ZigZag() {
    static const std::array<int, 64> order = [] {
        std::array<int, 64> positions{};
        size_t k = 0;
        for (int diagonal = 0; diagonal < 15; ++diagonal) {
            for (int step = 0; step <= diagonal; ++step) {
                // Even diagonals run up and to the right, odd ones down and to the left.
                const int row = diagonal % 2 == 0 ? diagonal - step : step;
                const int column = diagonal - row;
                if (row < 8 && column < 8)
                    positions[k++] = 8 * row + column;
            }
        }
        return positions;
    }();
    return order;
}

const TileTable& LumaDequantisation(int level) {
    static const auto tables = AllLevels(LumaQuantisers);
    return tables.at(static_cast<size_t>(level));
}

const TileTable& ChromaDequantisation(int level) {
    static const auto tables = AllLevels(ChromaQuantisers);
    return tables.at(static_cast<size_t>(level));
}

int64_t DequantisationValue(int quant, double scale, int shift, int fractionBits, double norm) {
    auto reciprocal = static_cast<int64_t>(std::round(8192.0 / (quant * scale)));
    if (reciprocal == 8192)
        reciprocal = 8191;
    reciprocal >>= shift;
    return static_cast<int64_t>(
        std::round(8192.0 / static_cast<double>(reciprocal) * std::pow(2.0, fractionBits) * norm));
}

} // namespace Vostrel::model
