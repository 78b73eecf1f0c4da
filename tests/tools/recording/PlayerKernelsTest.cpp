#include "tools/recording/Player.h"

#include "libimagedecoder/CpuArch.h"
#include "tools/LbeEncoder.h"

#include <gtest/gtest.h>
#include <stdexcept>

// Which kernel of LBE's planes a player runs cannot be seen from pictures, since all variants
// decode the same samples. So the calls of the fastest one are counted.

namespace Vostrel::libimagedecoder {

// The linker leads the row of the kernels' table here: see --wrap in CMakeLists.txt. The names are
// the ones that the compiler makes of DecodeLbePlaneSsse3.
size_t RealSsse3(const uint8_t* bytes, size_t position, const LbePlaneFormat& format,
                 LbePlaneBytes& plane) asm("__real__ZN7Vostrel15libimagedecoder19"
                                           "DecodeLbePlaneSsse3EPKhmRKNS0_14LbePlaneFormatE"
                                           "RNS0_13LbePlaneBytesE");
size_t CountedSsse3(const uint8_t* bytes, size_t position, const LbePlaneFormat& format,
                    LbePlaneBytes& plane) asm("__wrap__ZN7Vostrel15libimagedecoder19"
                                              "DecodeLbePlaneSsse3EPKhmRKNS0_14LbePlaneFormatE"
                                              "RNS0_13LbePlaneBytesE");

static int s_iSsse3Planes = 0;

size_t CountedSsse3(const uint8_t* bytes, size_t position, const LbePlaneFormat& format,
                    LbePlaneBytes& plane) {
    ++s_iSsse3Planes;
    return RealSsse3(bytes, position, format, plane);
}

} // namespace Vostrel::libimagedecoder

namespace Vostrel::recording {
namespace {

using libimagedecoder::InstrSetArchExt;

constexpr size_t Edge = 64;

Header LbeHeader() {
    Header header;
    header.m_codec = Codec::Lbe;
    header.m_layout = RecordLayout::Continuous;
    header.m_settings.m_uiWidth = Edge;
    header.m_settings.m_uiHeight = Edge;
    return header;
}

/// Planes that the kernel of this level's decoder takes from the SSSE3 one.
int Ssse3PlanesAt(const std::optional<KernelLevel>& level) {
    const Header header = LbeHeader();
    streamencoder::UpdateFormat format;
    format.m_codec = Codec::Lbe;
    format.m_uiProtocolVersion = header.m_uiProtocolVersion;
    format.m_layout = header.m_layout;
    streamencoder::LbeEncoder encoder(format, header.m_chroma, 5);
    const streamencoder::Picture picture(Edge, Edge);
    libimagedecoder::s_iSsse3Planes = 0;
    Player player(header, {{}, level});
    RecordedUpdate update;
    update.m_encoded = encoder.EncodeUpdate(picture, nullptr);
    EXPECT_EQ(player.Play(update).m_failure, "");
    return libimagedecoder::s_iSsse3Planes;
}

TEST(PlayerKernels, ALevelHoldsForThePlanesOfLbe) {
    for (const KernelLevel& level : libimagedecoder::ListKernelLevelsOfThisProcessor()) {
        const bool ssse3 = libimagedecoder::CreateLbePlaneKernelOf(level, nullptr) !=
                           libimagedecoder::DecodeLbePlaneNative;
        EXPECT_EQ(ssse3, level.m_uiNeededFlags >= InstrSetArchExt::Ssse3) << level.m_pName;
        EXPECT_EQ(Ssse3PlanesAt(level) > 0, ssse3) << level.m_pName;
    }
}

TEST(PlayerKernels, PortableOnesIncludeThatOfThePlanesOfLbe) {
    EXPECT_EQ(Ssse3PlanesAt(libimagedecoder::ListKernelLevels().front()), 0);
}

TEST(PlayerKernels, ALevelThatTheProcessorCannotRunIsRefused) {
    KernelLevel future = libimagedecoder::ListKernelLevels().back();
    future.m_pName = "future";
    future.m_uiNeededFlags = 0x80000000;
    try {
        Player player(LbeHeader(), {{}, future});
        FAIL() << "accepted";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "This processor cannot run future kernels");
    }
}

} // namespace
} // namespace Vostrel::recording
