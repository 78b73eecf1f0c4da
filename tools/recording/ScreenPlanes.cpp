#include "tools/recording/ScreenPlanes.h"

#include <algorithm>

namespace Vostrel::recording {

using libimagedecoder::UpdateRectangle;

namespace {

Settings OfSize(Settings settings, const UpdateRectangle& rectangle) {
    settings.m_uiWidth = rectangle.m_uiWidth;
    settings.m_uiHeight = rectangle.m_uiHeight;
    return settings;
}

void CopyRows(const uint8_t* from, size_t fromStride, uint8_t* to, size_t toStride, size_t columns,
              size_t rows) {
    for (; rows > 0; --rows) {
        std::copy_n(from, columns, to);
        from += fromStride;
        to += toStride;
    }
}

} // namespace

ScreenPlanes::ScreenPlanes(const Settings& settings, ChromaSubsampling chroma,
                           const UpdateRectangle& rectangle, Framebuffer& screen)
    : m_rectangle(OfSize(settings, rectangle), chroma) {
    for (size_t plane = 0; plane < m_parts.size(); ++plane)
        m_parts[plane] = PartOf(plane, rectangle, chroma, screen);
}

ScreenPlanes::Part ScreenPlanes::PartOf(size_t plane, const UpdateRectangle& rectangle,
                                        ChromaSubsampling chroma, Framebuffer& screen) {
    const size_t divX = plane == 0 ? 1 : ChromaDivX(chroma);
    const size_t divY = plane == 0 ? 1 : ChromaDivY(chroma);
    const size_t screenWidth = screen.GetWidth() / divX;
    const size_t screenHeight = screen.GetHeight() / divY;
    const size_t left = std::min(rectangle.m_uiX / divX, screenWidth);
    const size_t top = std::min(rectangle.m_uiY / divY, screenHeight);
    const size_t ownWidth = m_rectangle.GetWidth() / divX;
    return {m_rectangle.GetPlane(plane),
            ownWidth,
            screen.GetPlane(plane) + top * screenWidth + left,
            screenWidth,
            std::min(ownWidth, screenWidth - left),
            std::min(m_rectangle.GetHeight() / divY, screenHeight - top)};
}

void ScreenPlanes::TakeFromScreen() {
    for (const Part& part : m_parts)
        CopyRows(part.m_puiScreen, part.m_uiScreenStride, part.m_puiOwn, part.m_uiOwnStride,
                 part.m_uiColumns, part.m_uiRows);
}

void ScreenPlanes::PutOnScreen() {
    for (const Part& part : m_parts)
        CopyRows(part.m_puiOwn, part.m_uiOwnStride, part.m_puiScreen, part.m_uiScreenStride,
                 part.m_uiColumns, part.m_uiRows);
}

} // namespace Vostrel::recording
