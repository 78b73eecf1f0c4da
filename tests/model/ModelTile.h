#pragma once

#include "tests/model/ModelTables.h"

namespace Vostrel::model {

/// The codes and multipliers of a tile's component.
struct TileCoding {
    const HuffmanTable* dc;
    const HuffmanTable* ac;
    const TileTable* dequantisation;
};

/// Decodes the 64 coefficients (row-major, 16-bit values) of one tile and moves its DC predictor
/// on. Throws ModelError "StreamError" for the abort marker and for a position behind the tile's
/// last.
TileTable DecodeTile(ModelBits& bits, const TileCoding& coding, int64_t& dcPredictor);

} // namespace Vostrel::model
