#pragma once

#include "tools/UpdateEncoder.h"
#include "tools/walker/BlockWalker.h"
#include "tools/walker/WalkedStream.h"

#include <optional>

namespace Vostrel::walker {

/// Walks the updates of a stream, bit by bit as a decoder reads them, and tells a visitor what is
/// there. It finds exactly the faults that the decoders report.
class StreamWalker {
public:
    explicit StreamWalker(const WalkFormat& format) : m_format(format) {}

    const WalkFormat& GetFormat() const { return m_format; }

    /// The size that a rectangle must not exceed. Without it every rectangle is right.
    void SetResolution(uint16_t width, uint16_t height) { m_resolution = {width, height}; }

    /// Walks one update. Returns nothing when it has a fault, which the visitor has been told.
    std::optional<WalkEnd> Walk(const streamencoder::EncodedUpdate& update,
                                IStreamVisitor& visitor) const;

private:
    class Walking;
    struct Resolution {
        uint16_t m_uiWidth;
        uint16_t m_uiHeight;
    };

    WalkFormat m_format;
    std::optional<Resolution> m_resolution;
};

} // namespace Vostrel::walker
