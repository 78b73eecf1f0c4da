#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

namespace Vostrel::model {

/// Fails an update; what() is the text that the viewer's log shows.
class ModelError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The bytes of one update, handed out in pieces as the viewer's `read` does.
class ModelStream {
public:
    /// Every piece holds as many bytes as fit into pieceCapacity (at least 1).
    ModelStream(std::vector<uint8_t> bytes, size_t pieceCapacity);

    /// The next byte: the stream's, or one of the two zero bytes of padding behind its end.
    /// Throws ModelError "Stream has no more bytes!" for the third.
    uint8_t NextByte();

    /// The next byte of the stream itself, nothing at its end.
    std::optional<uint8_t> NextDataByte();

    /// Takes back the whole bytes that a reader fetched and did not use. Padding goes first, and
    /// the start of the current piece cannot be crossed: earlier pieces are gone.
    void GiveBack(size_t bytes);

    /// Delivered by `read` and not handed back, when the call ended now.
    size_t Consumed() const { return m_uiPosition; }

private:
    std::vector<uint8_t> m_vBytes;
    size_t m_uiPieceCapacity;
    size_t m_uiPieceBegin = 0;
    size_t m_uiPieceEnd = 0;
    size_t m_uiPosition = 0;
    size_t m_uiPadding = 0;
};

} // namespace Vostrel::model
