#pragma once

#include "bench/comparison/Report.h"
#include "bench/comparison/Rounds.h"

#include <span>

namespace Vostrel::bench {

/// A row of the comparison: a question, and the function that measures the answer. Several rows may
/// belong to one number.
struct Row {
    unsigned m_uiNumber;
    const char* m_title;
    void (*m_measure)(const RoundSettings& settings, Report& report);
};

/// All rows in the order of their numbers.
std::span<const Row> AllRows();

// Whole screens as ICT and as JPEG of the same levels.
void MeasureIctDesktop(const RoundSettings& settings, Report& report);
void MeasureIctDesktopExtremes(const RoundSettings& settings, Report& report);
void MeasureIctPhoto(const RoundSettings& settings, Report& report);
void MeasureIctConsole(const RoundSettings& settings, Report& report);
void MeasureIctOtherSubsamplings(const RoundSettings& settings, Report& report);
void MeasureIctWithLessInstructions(const RoundSettings& settings, Report& report);

// Updates of which little or nothing is coded.
void MeasureSmallUpdates(const RoundSettings& settings, Report& report);
void MeasureSparseUpdates(const RoundSettings& settings, Report& report);

// Kernels alone.
void MeasureColourConversion(const RoundSettings& settings, Report& report);
void MeasureTransform(const RoundSettings& settings, Report& report);

// Whole screens as LBE and by general compressors.
void MeasureLbe420(const RoundSettings& settings, Report& report);
void MeasureLbe444(const RoundSettings& settings, Report& report);
void MeasureLbeWithLessInstructions(const RoundSettings& settings, Report& report);
void MeasureReducedDepthDrawing(const RoundSettings& settings, Report& report);

// Threads, the Java binding, and a decoder's birth.
void MeasurePool(const RoundSettings& settings, Report& report);
void MeasurePerformOverhead(const RoundSettings& settings, Report& report);
void MeasureFirstUpdate(const RoundSettings& settings, Report& report);

} // namespace Vostrel::bench
