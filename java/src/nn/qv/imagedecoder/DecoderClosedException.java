package nn.qv.imagedecoder;

/**
 * A decoder was used after {@link ScreenDecoder#close}, or was closed by another thread while it
 * read an update.
 *
 * <pre>{@code
 * decoder.close();
 * decoder.decode(header, bytes, screen); // throws DecoderClosedException
 * }</pre>
 */
public final class DecoderClosedException extends IllegalStateException {
    private static final long serialVersionUID = 1;

    DecoderClosedException(String message) {
        super(message);
    }
}
