package nn.qv.example;

/**
 * What a connection settles before its first update.
 *
 * @param codec the encoding
 * @param protocolVersion version of the update data: 0, 1 or 2
 * @param chromaSubsampling 0 for 4:2:0, 1 for 4:2:2, 2 for 4:4:4
 * @param threads worker threads, 0 to 1024; used with protocol version 2 only
 */
public record DecoderOptions(
        Codec codec, int protocolVersion, int chromaSubsampling, int threads) {}
