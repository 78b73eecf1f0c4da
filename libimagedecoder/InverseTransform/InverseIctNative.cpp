#include "libimagedecoder/InverseTransform/InverseIctNative.h"

#include "libimagedecoder/ILogger.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <numeric>

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

namespace {

constexpr std::size_t TileEdge = 8;
constexpr std::size_t TileSamples = TileEdge * TileEdge;
constexpr int ScalingShift = 6;
constexpr int ClampLutReach = 2176;
constexpr std::size_t ClampLutEntries = 4352;
constexpr int LevelShift = 128;

constexpr unsigned char IdentityPermutation[64] = {
    0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
    22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43,
    44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

/// One-dimensional inverse over eight coefficients that stand Step elements apart; store(n, sum)
/// takes the results. A sum is at most 33 times as large as its largest coefficient.
template <std::size_t Step, typename Store>
[[gnu::always_inline]] inline void Inverse8(const short* x, Store store) {
    const int x0 = x[0], x1 = x[Step], x2 = x[2 * Step], x3 = x[3 * Step];
    const int x4 = x[4 * Step], x5 = x[5 * Step], x6 = x[6 * Step], x7 = x[7 * Step];
    const int even0 = x0 + x4 + 3 * x2 + x6;
    const int even1 = x0 - x4 + x2 - 3 * x6;
    const int even2 = x0 - x4 - x2 + 3 * x6;
    const int even3 = x0 + x4 - 3 * x2 - x6;
    const int odd0 = 10 * x1 + 9 * x3 + 6 * x5 + 2 * x7;
    const int odd1 = 9 * x1 - 2 * x3 - 10 * x5 - 6 * x7;
    const int odd2 = 6 * x1 - 10 * x3 + 2 * x5 + 9 * x7;
    const int odd3 = 2 * x1 - 6 * x3 + 9 * x5 - 10 * x7;
    store(0, even0 + odd0);
    store(1, even1 + odd1);
    store(2, even2 + odd2);
    store(3, even3 + odd3);
    store(4, even3 - odd3);
    store(5, even2 - odd2);
    store(6, even1 - odd1);
    store(7, even0 - odd0);
}

/// Whether all coefficients but the first are zero, of a row or a tile. In 64-bit words, since most
/// rows are.
template <std::size_t Count>
bool IsFlat(const short* coefficients) {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t words[Count / 4];
    std::memcpy(words, coefficients, sizeof words);
    return std::accumulate(words + 1, std::end(words), words[0] >> 16, std::bit_or()) == 0;
}

void TransformRow(short* row) {
    if (IsFlat<TileEdge>(row)) {
        std::fill_n(row + 1, TileEdge - 1, row[0]);
        return;
    }
    // Wraps to the low 16 bits, which extreme coefficients need.
    Inverse8<1>(row, [row](std::size_t n, int sum) { row[n] = static_cast<short>(sum); });
}

/// All columns, scaled: of the forms tried, both compilers turn this one into vector instructions
/// (bench: TransformTile/portable/Full, a third of the time of one column after the other and a
/// read of the clamp table for each sample).
void TransformColumns(const short* __restrict rows, unsigned char* __restrict samples) {
    short shifted[TileSamples];
    for (std::size_t column = 0; column < TileEdge; ++column) {
        // Even of extreme coefficients a scaled sum has less than 16 bits.
        Inverse8<TileEdge>(rows + column, [&](std::size_t n, int sum) {
            shifted[n * TileEdge + column] = static_cast<short>((sum >> ScalingShift) + LevelShift);
        });
    }
    for (std::size_t i = 0; i < TileSamples; ++i)
        samples[i] = static_cast<unsigned char>(std::clamp<short>(shifted[i], 0, 255));
}

} // namespace

InverseIctNative::InverseIctNative(ILogger* logger)
    : IInverseIct(logger), m_pClampLutStorage(new unsigned char[ClampLutEntries]),
      m_pClampLut(m_pClampLutStorage.get() + ClampLutReach) {
    int sample = LevelShift - ClampLutReach;
    for (unsigned char* entry = m_pClampLutStorage.get();
         entry != m_pClampLutStorage.get() + ClampLutEntries;)
        *entry++ = static_cast<unsigned char>(std::clamp(sample++, 0, 255));
    m_pLogger->Log("Inverse ICT is not accelerated");
}

InverseIctNative::~InverseIctNative() = default;

void InverseIctNative::TransformTile(short* coefficients, unsigned char* destination,
                                     unsigned long stride) {
    if (IsFlat<TileSamples>(coefficients)) {
        TransformRow(coefficients);
        for (std::size_t row = 0; row < TileEdge; ++row)
            std::memset(destination + row * stride, Clamp(coefficients[0] >> ScalingShift),
                        TileEdge);
        return;
    }
    for (std::size_t row = 0; row < TileEdge; ++row)
        TransformRow(coefficients + row * TileEdge);
    unsigned char samples[TileSamples];
    TransformColumns(coefficients, samples);
    for (std::size_t row = 0; row < TileEdge; ++row)
        std::memcpy(destination + row * stride, samples + row * TileEdge, TileEdge);
}

unsigned char InverseIctNative::Clamp(int scaled) const {
    return m_pClampLut[std::clamp(scaled, -ClampLutReach, ClampLutReach - 1)];
}

bool InverseIctNative::IsAccelerated() const {
    return false;
}

const unsigned char* InverseIctNative::GetTileIndexPermutation() const {
    return IdentityPermutation;
}

std::uint16_t InverseIctNative::GetDataAlignmentBytes() const {
    return 8;
}

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
