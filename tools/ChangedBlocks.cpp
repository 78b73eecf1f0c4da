#include "tools/ChangedBlocks.h"

#include <algorithm>
#include <stdexcept>

namespace Vostrel::streamencoder {

using libimagedecoder::MacroblockEdge;
using libimagedecoder::UpdateRectangle;

namespace {

bool DiffersWithin(const Picture& picture, const Picture& previous, size_t left, size_t top) {
    const size_t right = std::min(left + MacroblockEdge, picture.m_uiWidth);
    const size_t bottom = std::min(top + MacroblockEdge, picture.m_uiHeight);
    if (left >= right)
        return false;
    for (size_t y = top; y < bottom; ++y) {
        const RgbPixel* row = &picture.At(left, y);
        if (!std::equal(row, row + (right - left), &previous.At(left, y)))
            return true;
    }
    return false;
}

} // namespace

std::vector<bool> ChangedBlocks(const Picture& picture, const Picture& previous,
                                const UpdateRectangle& rectangle) {
    if (picture.m_uiWidth != previous.m_uiWidth || picture.m_uiHeight != previous.m_uiHeight)
        throw std::invalid_argument("Successive pictures must have one size");

    std::vector<bool> changed;
    changed.reserve(rectangle.MacroblockCount());
    for (size_t row = 0; row < rectangle.MacroblockRows(); ++row) {
        for (size_t column = 0; column < rectangle.MacroblockColumns(); ++column) {
            changed.push_back(DiffersWithin(picture, previous,
                                            rectangle.m_uiX + column * MacroblockEdge,
                                            rectangle.m_uiY + row * MacroblockEdge));
        }
    }
    return changed;
}

void BridgeLongGaps(std::vector<bool>& changed, size_t maxSkip) {
    size_t next = 0; // the first block that the next skip code counts
    for (size_t i = 0; i < changed.size(); ++i) {
        if (!changed[i])
            continue;
        while (i - next > maxSkip) {
            changed[next + maxSkip] = true;
            next += maxSkip + 1;
        }
        next = i + 1;
    }
}

} // namespace Vostrel::streamencoder
