#pragma once

#include "tests/model/ModelBits.h"
#include "tests/model/ModelUpdate.h"

#include <optional>

namespace Vostrel::model {

/// The length field in front of a coded block of protocol version 2.
struct ModelLength {
    int bytes;     ///< of the block's record, from its skip code on; 0 asks for decoding in place
    int fieldBits; ///< that the field itself took
};

/// What the two encodings do differently in an update.
class IModelBlockCodec {
public:
    virtual ~IModelBlockCodec() = default;

    /// Reads the length field; versions 0 and 1 have none.
    virtual std::optional<ModelLength> ReadLength(ModelBits& bits) = 0;

    /// Decodes the block whose top-left pixel stands here in the rectangle.
    virtual void DecodeBlock(ModelBits& bits, int left, int top) = 0;
};

/// How the rectangle's blocks follow each other.
struct ModelWalkRules {
    int longCountBits; ///< 14 or 16; all ones ends the update
    bool pool;         ///< records are cut out of the stream and decoded as jobs
};

/// What the walk found.
struct ModelWalkResult {
    ModelMask mask;
    uint64_t changedRectangle;
};

/// Walks an update's blocks. Jobs run at once; the first failure in block order is thrown at the
/// end, as a ModelError.
ModelWalkResult WalkBlocks(ModelBits& bits, const ModelRectangle& area, const ModelWalkRules& rules,
                           IModelBlockCodec& codec);

} // namespace Vostrel::model
