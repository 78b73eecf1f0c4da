#include "tests/tools/LibraryViewer.h"
#include "tests/tools/Screens.h"
#include "tools/IctEncoder.h"

#include <gtest/gtest.h>

namespace Vostrel::streamencoder {
namespace {

using Chroma = ChromaSubsampling;

UpdateFormat Format(unsigned version, RecordLayout layout) {
    UpdateFormat format;
    format.m_uiProtocolVersion = version;
    format.m_layout = layout;
    return format;
}

double LumaPsnr(const Picture& picture, uint32_t quality) {
    IctEncoder encoder(Format(2, RecordLayout::Pool), Chroma::Yuv420, quality);
    const auto width = static_cast<uint16_t>(picture.m_uiWidth);
    const auto height = static_cast<uint16_t>(picture.m_uiHeight);
    LibraryViewer viewer(encoder, 2, width, height);
    viewer.DrawIntoPlanes();
    const EncodedUpdate update = encoder.EncodeUpdate(picture, nullptr);
    viewer.Show(update);
    const Plane source = ConvertToYCbCr(picture, update.m_rectangle, Chroma::Yuv420).m_y;
    return Psnr(source.At(0, 0), source.m_uiWidth, viewer.GetLuma().At(0, 0), width, width, height);
}

TEST(IctRoundTrip, DesktopGetsBetterWithEveryLevelAndPasses42Decibels) {
    const Picture desktop = Screen("desktop-1920x1080-00");
    double last = 0;
    for (uint32_t quality = 0; quality < 16; ++quality) {
        const double psnr = LumaPsnr(desktop, quality);
        RecordProperty("psnr" + std::to_string(quality), std::to_string(psnr));
        EXPECT_GT(psnr, last) << "quality " << quality;
        last = psnr;
    }
    EXPECT_GT(last, 42.0);
}

TEST(IctRoundTrip, ScreenSequencesLookTheSameInEveryFraming) {
    struct Mode {
        unsigned m_uiVersion;
        RecordLayout m_layout;
        unsigned m_uiThreads;
    };
    constexpr Mode modes[] = {{0, RecordLayout::Continuous, 0}, {1, RecordLayout::Continuous, 0},
                              {2, RecordLayout::Continuous, 0}, {2, RecordLayout::InPlace, 0},
                              {2, RecordLayout::InPlace, 2},    {2, RecordLayout::Pool, 2}};
    const std::vector<Picture> frames{Screen("session-1280x720-00"), Screen("session-1280x720-01"),
                                      Screen("session-1280x720-07")};
    for (const Chroma chroma : {Chroma::Yuv420, Chroma::Yuv422, Chroma::Yuv444}) {
        std::vector<std::vector<uint32_t>> shown;
        for (const Mode& mode : modes) {
            IctEncoder encoder(Format(mode.m_uiVersion, mode.m_layout), chroma, 11);
            LibraryViewer viewer(encoder, mode.m_uiThreads, 1280, 720);
            const Picture* previous = nullptr;
            for (const Picture& frame : frames) {
                viewer.Show(encoder.EncodeUpdate(frame, previous));
                previous = &frame;
            }
            shown.push_back(viewer.GetArgb());
        }
        for (size_t i = 1; i < shown.size(); ++i) {
            EXPECT_TRUE(shown[i] == shown[0]) << "mode " << i;
        }
    }
}

} // namespace
} // namespace Vostrel::streamencoder
