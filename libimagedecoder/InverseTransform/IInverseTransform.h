#pragma once

namespace Vostrel::libimagedecoder::InverseTransform {

/// Common root of the inverse transforms of square tiles with TileEdge samples a side.
template <unsigned int TileEdge>
class IInverseTransform {};

} // namespace Vostrel::libimagedecoder::InverseTransform
