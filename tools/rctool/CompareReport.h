#pragma once

#include "tools/Picture.h"
#include "tools/PictureDifference.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace Vostrel::rctool {

/// Two pictures that differ.
struct ComparedPictures {
    size_t m_uiUpdate = 0; ///< after which they are shown; of recordings
    std::array<streamencoder::PictureSize, 2> m_aSizes;
    streamencoder::PictureDifference m_difference; ///< nothing but zeros for two sizes
};

/// What a comparison reports.
struct CompareReport {
    bool m_bRecordings = false;
    std::array<size_t, 2> m_auiUpdates{}; ///< of recordings
    std::vector<ComparedPictures> m_vDifferent;
    double m_fSquares = 0;  ///< of all pictures of the same size
    size_t m_uiSamples = 0; ///< in them

    /// The pictures that differ first, when they have one size.
    std::optional<streamencoder::ShownDifference> m_shown;

    bool IsEqual() const { return m_vDifferent.empty() && m_auiUpdates[0] == m_auiUpdates[1]; }

    /// Adds two pictures to the sums, and to the list if they differ.
    void Add(const streamencoder::Picture& a, const streamencoder::Picture& b, size_t update);
};

/// Write to the standard output.
void PrintText(const CompareReport& report);
void PrintJson(const CompareReport& report);

} // namespace Vostrel::rctool
