#include "libimagedecoder/IImageDecoder.h"

#include "libimagedecoder/UpdateSyntax.h"

#include <stdexcept>

namespace Vostrel::libimagedecoder {
namespace {

constexpr unsigned int MaxProtocolVersion = s_aUpdateRules.size() - 1;
constexpr unsigned int MaxChromaSubsampling = 2;
constexpr std::array<uint32_t, 3> ChromaDivX = {2, 2, 1};
constexpr std::array<uint32_t, 3> ChromaDivY = {2, 1, 1};
constexpr size_t InitialSegmentStoreBytes = 16384;

unsigned int Checked(unsigned int value, unsigned int maximum, const char* message) {
    if (value > maximum)
        throw std::invalid_argument(message);
    return value;
}

} // namespace

IImageDecoder::IImageDecoder(ImageDecoderRenderer* renderer, IStreambuffer* stream, ILogger* logger,
                             unsigned int protocolVersion, unsigned int chromaSubsampling)
    : BitStreamReader(stream, 0, 0, 0, 0), m_pRenderer(renderer), m_pLogger(logger),
      m_uiProtocolVersion(
          Checked(protocolVersion, MaxProtocolVersion, "The protocol version must be 0, 1 or 2")),
      m_uiChromaSubsampling(Checked(chromaSubsampling, MaxChromaSubsampling,
                                    "The chroma subsampling must be 0, 1 or 2")),
      m_uiChromaDivX(ChromaDivX[chromaSubsampling]), m_uiChromaDivY(ChromaDivY[chromaSubsampling]),
      m_uiLongCountBits(RulesOf(protocolVersion).m_uiLongSkipBits),
      m_uiLongCountEscape(RulesOf(protocolVersion).LongSkipEscape()),
      m_vecSegmentStore(InitialSegmentStoreBytes) {}

uint64_t IImageDecoder::HandleUpdate(unsigned int quality, unsigned short reserved,
                                     unsigned short x, unsigned short y, unsigned short width,
                                     unsigned short height) {
    SetState({});
    const uint64_t result = HandleUpdateImplementation(quality, reserved, x, y, width, height);
    m_pStream->GiveBackBytes(HeldBits() / 8);
    return result;
}

} // namespace Vostrel::libimagedecoder
