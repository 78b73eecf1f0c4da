package nn.qv.tests;

import nn.qv.imagedecoder.ChromaSubsampling;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.ProtocolVersion;
import nn.qv.imagedecoder.RecordLayout;
import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * How a decoder is created, in the numbers of the native interface.
 *
 * @param codec the encoding
 * @param protocolVersion version of the update data: 0, 1 or 2
 * @param chromaSubsampling 0 for 4:2:0, 1 for 4:2:2, 2 for 4:4:4
 * @param threads worker threads, 0 to 1024; used with protocol version 2 only
 */
record RawOptions(NativeCodec codec, int protocolVersion, int chromaSubsampling, int threads) {
    /** The same for a viewer's decoder; updates without a pool are continuous. */
    DecoderOptions.Builder forViewer() {
        return DecoderOptions.builder(Codec.valueOf(codec.name()))
                .protocolVersion(ProtocolVersion.values()[protocolVersion])
                .chromaSubsampling(ChromaSubsampling.values()[chromaSubsampling])
                .recordLayout(threads > 0 ? RecordLayout.PADDED : RecordLayout.CONTINUOUS)
                .threads(threads);
    }
}
