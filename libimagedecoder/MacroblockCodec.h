#pragma once

#include "libimagedecoder/BitStreamReader.h"
#include "libimagedecoder/Macroblock.h"
#include "libimagedecoder/StreamWindow.h"

#include <concepts>
#include <cstddef>

namespace Vostrel::libimagedecoder {

/// Rows of an update's rectangle that are drawn together: a rectangle of their own.
struct DrawnRows {
    UpdateRectangle m_Rectangle;
    size_t m_uiTop = 0; ///< pixels from the update's top edge, a multiple of 16
};

/// What an encoding must offer to decode updates: one object for one update.
///
/// Its Source decodes macroblocks, one after the other, from one bit reader: the frame's own, or
/// the reader of a record, on the thread of a worker. A Source is made of the codec, the reader,
/// the bytes that may be read after the reader's stream (see StreamWindow) and the worker's number;
/// it reads through a StreamWindow, which the walk over the update shares.
///
/// Draw hands rows of the decoded planes to the renderer. skipMask has an entry for each macroblock
/// of these rows.
template <class Codec>
concept MacroblockCodec = std::constructible_from<typename Codec::Source, Codec&, BitStreamReader&,
                                                  size_t, unsigned int> &&
    requires(Codec& codec, typename Codec::Source& source, const Macroblock& macroblock,
             const DrawnRows& rows, const bool* skipMask) {
    { source.GetWindow() } -> std::same_as<StreamWindow&>;
    source.Decode(macroblock);
    codec.Draw(rows, skipMask);
};

} // namespace Vostrel::libimagedecoder
