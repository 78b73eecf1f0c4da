#pragma once

#include "tools/BitWriter.h"
#include "tools/UpdateFormat.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::streamencoder {

/// Writes the frame of one update that both encodings share: skip codes, the lengths of records,
/// their padding, and the end marker. What a coded block holds is the encoding's own affair.
class UpdateWriter {
public:
    /// Throws std::invalid_argument for a protocol version above 2.
    explicit UpdateWriter(const UpdateFormat& format);

    /// The most blocks that one skip code can pass over.
    size_t GetMaxSkip() const { return m_rules.LongSkipEscape() - 1; }

    /// Appends a coded block that comes after `skipped` (0..GetMaxSkip()) unchanged ones.
    void WriteBlock(size_t skipped, const BitWriter& block);

    /// Ends the update and hands out its bytes. The writer is then as good as new.
    std::vector<uint8_t> Finish();

private:
    /// One way of writing a record's length: a fixed prefix, then the number.
    struct LengthForm {
        unsigned m_uiPrefix;
        unsigned m_uiPrefixBits;
        unsigned m_uiNumberBits;
    };
    /// The length field of one record: where it does not fit any form, the number is 0.
    struct LengthField {
        LengthForm m_form;
        uint32_t m_uiNumber;
    };

    void WriteSkip(size_t skipped);
    void WriteLength(const LengthField& field);
    LengthField ChooseLength(size_t recordStart, size_t blockBits) const;

    UpdateFormat m_format;
    const libimagedecoder::UpdateRules& m_rules;
    std::vector<LengthForm> m_vLengthForms;
    BitWriter m_bits;
};

} // namespace Vostrel::streamencoder
