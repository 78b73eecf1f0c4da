#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/recording/Framebuffer.h"
#include "tools/recording/Recording.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Vostrel::recording {

/// Planes of one rectangle beside the planes of a whole screen, with the samples of both where they
/// belong.
class ScreenPlanes {
public:
    /// settings: of the screen, which must have planes of this subsampling and outlive the object.
    ScreenPlanes(const Settings& settings, ChromaSubsampling chroma,
                 const libimagedecoder::UpdateRectangle& rectangle, Framebuffer& screen);

    /// Where a plane (0 Y, 1 Cb, 2 Cr) of the rectangle begins.
    uint8_t* GetPlane(size_t plane) { return m_rectangle.GetPlane(plane); }

    void TakeFromScreen();
    void PutOnScreen();

private:
    /// Where the visible part of a plane lies in the rectangle's planes and on the screen.
    struct Part {
        uint8_t* m_puiOwn;
        size_t m_uiOwnStride;
        uint8_t* m_puiScreen;
        size_t m_uiScreenStride;
        size_t m_uiColumns;
        size_t m_uiRows;
    };

    Part PartOf(size_t plane, const libimagedecoder::UpdateRectangle& rectangle,
                ChromaSubsampling chroma, Framebuffer& screen);

    Framebuffer m_rectangle;
    std::array<Part, 3> m_parts;
};

} // namespace Vostrel::recording
