#pragma once

#include "tests/model/ModelKernelRule.h"
#include "tests/model/ModelTables.h"

namespace Vostrel::model {

/// The 64 samples (0..255, row-major) of a tile with these coefficients (row-major, 16-bit values).
TileTable InverseTransform(const TileTable& coefficients, KernelRule rule);

} // namespace Vostrel::model
