#include "libimagedecoder/InverseTransform/InverseIctNative.h"

#include "libimagedecoder/ILogger.h"

#include <algorithm>
#include <cstddef>

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

namespace {

constexpr std::size_t TileEdge = 8;
constexpr int ScalingShift = 6;
constexpr int ClampLutReach = 2176;
constexpr std::size_t ClampLutEntries = 4352;
constexpr int LevelShift = 128;

constexpr unsigned char IdentityPermutation[64] = {
    0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
    22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43,
    44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

bool IsFlat(const short* x, std::size_t step) {
    return (x[step] | x[2 * step] | x[3 * step] | x[4 * step] | x[5 * step] | x[6 * step] |
            x[7 * step]) == 0;
}

/// One-dimensional inverse over eight coefficients that stand step elements apart. A sum is at most
/// 33 times as large as its largest coefficient.
void Inverse8(const short* x, std::size_t step, int (&y)[TileEdge]) {
    const int x0 = x[0], x1 = x[step], x2 = x[2 * step], x3 = x[3 * step];
    const int x4 = x[4 * step], x5 = x[5 * step], x6 = x[6 * step], x7 = x[7 * step];
    const int even[] = {x0 + x4 + 3 * x2 + x6, x0 - x4 + x2 - 3 * x6, //
                        x0 - x4 - x2 + 3 * x6, x0 + x4 - 3 * x2 - x6};
    const int odd[] = {10 * x1 + 9 * x3 + 6 * x5 + 2 * x7, 9 * x1 - 2 * x3 - 10 * x5 - 6 * x7,
                       6 * x1 - 10 * x3 + 2 * x5 + 9 * x7, 2 * x1 - 6 * x3 + 9 * x5 - 10 * x7};
    for (std::size_t n = 0; n < TileEdge / 2; ++n) {
        y[n] = even[n] + odd[n];
        y[TileEdge - 1 - n] = even[n] - odd[n];
    }
}

void TransformRow(short* row) {
    if (IsFlat(row, 1)) {
        std::fill_n(row + 1, TileEdge - 1, row[0]);
        return;
    }
    int y[TileEdge];
    Inverse8(row, 1, y);
    // Wraps to the low 16 bits, which extreme coefficients need.
    std::transform(y, y + TileEdge, row, [](int sum) { return static_cast<short>(sum); });
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
    for (std::size_t row = 0; row < TileEdge; ++row)
        TransformRow(coefficients + row * TileEdge);

    for (std::size_t x = 0; x < TileEdge; ++x) {
        const short* column = coefficients + x;
        int y[TileEdge];
        if (IsFlat(column, TileEdge))
            std::fill_n(y, TileEdge, column[0]);
        else
            Inverse8(column, TileEdge, y);
        for (std::size_t row = 0; row < TileEdge; ++row)
            destination[row * stride + x] = Clamp(y[row]);
    }
}

unsigned char InverseIctNative::Clamp(int sum) const {
    // Only coefficients that no encoder sends leave the table; its ends hold their result.
    return m_pClampLut[std::clamp(sum >> ScalingShift, -ClampLutReach, ClampLutReach - 1)];
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
