#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Vostrel::fuzz {

/// How the bits of an update are to be understood.
struct UpdateCoding {
    bool lbe;
    unsigned version;
    unsigned chroma;
    bool pool; ///< records are cut by their lengths
    unsigned quality;
};

/// One field of an update's bits.
struct BitField {
    enum class Kind {
        Skip,
        Length,
        DcLuma,
        AcLuma,
        DcChroma,
        AcChroma,
        Value,   ///< the bits that a code announces, or a literal, or a count
        Run,     ///< the head of an LBE token
        Padding, ///< up to a record's end
        Tail,    ///< what cannot be understood
    };

    Kind kind;
    uint32_t value;
    unsigned bits;
};

using BitFields = std::vector<BitField>;

/// Takes an update apart. The fields together are its bits.
BitFields ParseUpdate(std::span<const uint8_t> bytes, const UpdateCoding& coding);

/// The bytes of these fields.
std::vector<uint8_t> PackFields(const BitFields& fields);

/// Gives every record that has a length the length and the padding that it now needs.
BitFields WithLengthsRepaired(const BitFields& fields, const UpdateCoding& coding);

} // namespace Vostrel::fuzz
