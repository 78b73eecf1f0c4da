#pragma once

#include "libimagedecoder/IctTiles.h"
#include "tools/recording/Recording.h"

namespace Vostrel::rctool {

/// Names as they are written in options and results.
const char* NameOf(streamencoder::Codec codec);
const char* NameOf(streamencoder::ChromaSubsampling chroma);
const char* NameOf(streamencoder::RecordLayout layout);
const char* NameOf(recording::Sink sink);
const char* NameOf(recording::KernelRule rule);

/// Of a tile: Y, Cb or Cr; of LBE's planes luma or chroma.
const char* NameOf(streamencoder::Codec codec, libimagedecoder::IctComponent component);

} // namespace Vostrel::rctool
