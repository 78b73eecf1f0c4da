package nn.qv.example;

import java.io.IOException;
import nn.qv.rccore.impl.rfb.img.hive.NativeImageDecodingHelper;

/**
 * One decoder's life: makes the native objects in the order in which they need each other, decodes
 * updates, and deletes them in the reverse order.
 *
 * <p>To be used by one thread at a time; the native library must be loaded.
 */
public final class UpdateDecoder implements AutoCloseable {
    private final UpdateFeed feed;
    private final Codec codec;
    private Handles handles;

    /**
     * @param feed supplies the updates and takes the log
     * @throws IOException if the library refuses the options or runs out of memory
     */
    public UpdateDecoder(UpdateFeed feed, DecoderOptions options) throws IOException {
        this.feed = feed;
        codec = options.codec();
        long logger = feed.createLogger();
        long streambuffer = 0;
        long renderer = 0;
        long decoder = 0;
        try {
            streambuffer = feed.createStreambuffer(logger);
            renderer = NativeImageDecodingHelper.createRCRenderer(logger);
            decoder =
                    codec.create.create(
                            renderer,
                            streambuffer,
                            logger,
                            options.threads(),
                            options.protocolVersion(),
                            options.chromaSubsampling());
        } finally {
            handles = new Handles(logger, streambuffer, renderer, decoder);
            if (decoder == 0) {
                close();
            }
        }
    }

    /** Sets the contrast stretch of later updates, 0 (off) to 100. */
    public void setContrastEnhance(int level) {
        codec.contrastEnhance.set(handles.renderer(), level);
    }

    /** Switches the brightness correction of later updates. */
    public void setClientPostprocessingEnabled(boolean enabled) {
        codec.clientPostprocessing.set(handles.renderer(), enabled);
    }

    /**
     * Decodes an update into the framebuffer.
     *
     * @param transfer the array through which the bytes travel; its size limits each piece
     * @return the packed changed rectangle, 0 if nothing changed, -1 if the update failed
     */
    public long decode(Update update, Framebuffer framebuffer, byte[] transfer) {
        feed.begin(update.data());
        return codec.perform.perform(transfer, framebuffer, update, handles);
    }

    /** Deletes the native objects. Handle 0, for what does not exist any more, is ignored. */
    @Override
    public void close() {
        codec.delete.accept(handles.decoder());
        NativeImageDecodingHelper.deleteStreambuffer(handles.streambuffer());
        NativeImageDecodingHelper.deleteRCRenderer(handles.renderer());
        NativeImageDecodingHelper.deleteLogger(handles.logger());
        handles = new Handles(0, 0, 0, 0);
    }
}
