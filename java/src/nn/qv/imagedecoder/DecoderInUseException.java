package nn.qv.imagedecoder;

/**
 * A decoder was called while another call was still running: from a second thread, or from within
 * the source that the first call reads from. The running call goes on undisturbed. {@link
 * ScreenDecoder#close} is never refused.
 *
 * <pre>{@code
 * // On the user interface's thread, while the network thread decodes an update:
 * decoder.setContrast(50); // throws DecoderInUseException
 * }</pre>
 */
public final class DecoderInUseException extends IllegalStateException {
    private static final long serialVersionUID = 1;

    DecoderInUseException(String message) {
        super(message);
    }
}
