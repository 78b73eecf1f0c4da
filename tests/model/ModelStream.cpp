#include "tests/model/ModelStream.h"

#include <algorithm>
#include <utility>

namespace Vostrel::model {

ModelStream::ModelStream(std::vector<uint8_t> bytes, size_t pieceCapacity)
    : m_vBytes(std::move(bytes)), m_uiPieceCapacity(pieceCapacity) {}

std::optional<uint8_t> ModelStream::NextDataByte() {
    if (m_uiPosition == m_vBytes.size())
        return std::nullopt;
    if (m_uiPosition == m_uiPieceEnd) {
        m_uiPieceBegin = m_uiPieceEnd;
        m_uiPieceEnd = std::min(m_vBytes.size(), m_uiPieceBegin + m_uiPieceCapacity);
    }
    return m_vBytes[m_uiPosition++];
}

uint8_t ModelStream::NextByte() {
    if (const std::optional<uint8_t> byte = NextDataByte())
        return *byte;
    if (m_uiPadding == 2)
        throw ModelError("Stream has no more bytes!");
    ++m_uiPadding;
    return 0;
}

void ModelStream::GiveBack(size_t bytes) {
    if (m_uiPadding >= bytes)
        return;
    const size_t fromThePiece = m_uiPosition - m_uiPieceBegin;
    m_uiPosition -= std::min(bytes - m_uiPadding, fromThePiece);
}

} // namespace Vostrel::model
