#include "tools/ChangedRectangle.h"

#include <algorithm>

namespace Vostrel::streamencoder {

using libimagedecoder::UpdateRectangle;

std::optional<UpdateRectangle> ChangedRectangle(const Picture& picture, const Picture& previous,
                                                const UpdateRectangle& rectangle) {
    const size_t endX =
        std::min<size_t>(size_t{rectangle.m_uiX} + rectangle.m_uiWidth, picture.m_uiWidth);
    const size_t endY =
        std::min<size_t>(size_t{rectangle.m_uiY} + rectangle.m_uiHeight, picture.m_uiHeight);
    size_t left = endX;
    size_t right = 0;
    size_t top = endY;
    size_t bottom = 0;
    for (size_t y = rectangle.m_uiY; y < endY; ++y) {
        for (size_t x = rectangle.m_uiX; x < endX; ++x) {
            if (picture.At(x, y) == previous.At(x, y))
                continue;
            left = std::min(left, x);
            right = std::max(right, x + 1);
            top = std::min(top, y);
            bottom = y + 1;
        }
    }
    if (left >= right)
        return std::nullopt;
    return UpdateRectangle{static_cast<uint16_t>(left), static_cast<uint16_t>(top),
                           static_cast<uint16_t>(right - left),
                           static_cast<uint16_t>(bottom - top)};
}

} // namespace Vostrel::streamencoder
