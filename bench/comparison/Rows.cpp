#include "bench/comparison/Rows.h"

namespace Vostrel::bench {

namespace {

constexpr Row Rows[] = {
    {1, "ICT 4:2:0, desktop, level 8", MeasureIctDesktop},
    {2, "ICT 4:2:0, desktop, levels 0 and 15", MeasureIctDesktopExtremes},
    {3, "ICT 4:2:0, photo, levels 3, 12 and 15", MeasureIctPhoto},
    {4, "ICT 4:2:0, console, levels 3 and 15", MeasureIctConsole},
    {5, "ICT 4:2:2 and 4:4:4, desktop, level 8", MeasureIctOtherSubsamplings},
    {6, "small ICT updates", MeasureSmallUpdates},
    {7, "whole-screen ICT updates with 0 % and 1 % coded", MeasureSparseUpdates},
    {8, "colour conversion against plain stores", MeasureColourConversion},
    {9, "inverse transform, in cycles", MeasureTransform},
    {10, "LBE 4:2:0, desktop, quality 10", MeasureLbe420},
    {11, "LBE 4:4:4, desktop, quality 10", MeasureLbe444},
    {11, "drawing at reduced depth against a table read per pixel", MeasureReducedDepthDrawing},
    {12, "protocol version 2 with workers", MeasurePool},
    {13, "row 1 with SSE2 alone and portable", MeasureIctWithLessInstructions},
    {13, "row 10 with SSE2 alone", MeasureLbeWithLessInstructions},
    {14, "what performICT adds to HandleUpdate in a JVM", MeasurePerformOverhead},
    {15, "create of a decoder, and its first update", MeasureFirstUpdate},
};

} // namespace

std::span<const Row> AllRows() {
    return Rows;
}

} // namespace Vostrel::bench
