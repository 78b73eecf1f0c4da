#include "tools/rctool/Names.h"

#include <array>

namespace Vostrel::rctool {

namespace {

template <size_t count, class Value>
const char* NameIn(const std::array<const char*, count>& names, Value value) {
    return names.at(static_cast<size_t>(value));
}

} // namespace

const char* NameOf(streamencoder::Codec codec) {
    return NameIn(std::array{"ict", "lbe"}, codec);
}

const char* NameOf(streamencoder::ChromaSubsampling chroma) {
    return NameIn(std::array{"420", "422", "444"}, chroma);
}

const char* NameOf(streamencoder::RecordLayout layout) {
    return NameIn(std::array{"continuous", "pool", "inplace"}, layout);
}

const char* NameOf(recording::Sink sink) {
    return NameIn(std::array{"argb", "planes"}, sink);
}

const char* NameOf(recording::KernelRule rule) {
    return NameIn(std::array{"accelerated", "portable"}, rule);
}

const char* NameOf(streamencoder::Codec codec, libimagedecoder::IctComponent component) {
    if (codec == streamencoder::Codec::Lbe)
        return component == libimagedecoder::ComponentY ? "luma" : "chroma";
    return NameIn(std::array{"Y", "Cb", "Cr"}, component);
}

} // namespace Vostrel::rctool
