package nn.qv.imagedecoder;

/**
 * A decoder was called while another call was still running: from a second thread, or from within
 * the source that the first call reads from. The running call goes on undisturbed.
 *
 * <pre>{@code
 * // On the network thread, while the user interface calls decoder.close():
 * decoder.decode(header, input, screen); // close() throws DecoderInUseException
 * }</pre>
 */
public final class DecoderInUseException extends IllegalStateException {
    private static final long serialVersionUID = 1;

    DecoderInUseException(String message) {
        super(message);
    }
}
