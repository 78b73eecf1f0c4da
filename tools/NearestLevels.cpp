#include "tools/NearestLevels.h"

#include "libimagedecoder/QuantizedLevels.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <vector>

namespace Vostrel::streamencoder {

using libimagedecoder::QuantizedLevels;

namespace {

LevelMap NearestLevels(std::span<const uint8_t> expansion) {
    LevelMap map{};
    for (int sample = 0; sample < 256; ++sample) {
        const auto nearest = std::ranges::min_element(
            expansion, {}, [sample](uint8_t expanded) { return std::abs(expanded - sample); });
        map[static_cast<size_t>(sample)] =
            static_cast<uint8_t>(std::distance(expansion.begin(), nearest));
    }
    return map;
}

} // namespace

LevelMap NearestLumaLevels(unsigned bits) {
    const std::vector<std::span<const uint8_t>> expansions{
        QuantizedLevels::s_auiLuma2, QuantizedLevels::s_auiLuma3, QuantizedLevels::s_auiLuma4,
        QuantizedLevels::s_auiLuma5, QuantizedLevels::s_auiLuma6};
    return NearestLevels(expansions.at(bits - 2));
}

LevelMap NearestChromaLevels(unsigned bits) {
    const std::vector<std::span<const uint8_t>> expansions{QuantizedLevels::s_auiChroma3,
                                                           QuantizedLevels::s_auiChroma4,
                                                           QuantizedLevels::s_auiChroma5};
    return NearestLevels(expansions.at(bits - 3));
}

} // namespace Vostrel::streamencoder
