#pragma once

namespace Vostrel::model {

/// The kernels come in two rules: the portable one, and the one that SSE2 and AVX2 share.
enum class KernelRule { Portable, Accelerated };

} // namespace Vostrel::model
