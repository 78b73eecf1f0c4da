package nn.qv.tests;

import java.io.IOException;
import nn.qv.imagedecoder.internal.NativeCodec;
import nn.qv.imagedecoder.internal.NativeObjects;
import nn.qv.imagedecoder.internal.NativeTarget;

/**
 * One decoder's life without any of the checks that a viewer's decoder makes, for tests of what the
 * native methods do with all that they may be given.
 */
final class RawDecoder implements AutoCloseable {
    private final MemoryFeed feed;
    private final NativeCodec codec;
    private final NativeObjects objects;

    /** Supplies the updates from the feed, which also takes the log. */
    RawDecoder(MemoryFeed feed, RawOptions options) throws IOException {
        this.feed = feed;
        codec = options.codec();
        objects =
                NativeObjects.create(
                        feed,
                        codec,
                        options.threads(),
                        options.protocolVersion(),
                        options.chromaSubsampling());
    }

    void setContrastEnhance(int level) {
        codec.setContrast(objects.handles().renderer(), level);
    }

    void setClientPostprocessingEnabled(boolean enabled) {
        codec.setPostprocessing(objects.handles().renderer(), enabled);
    }

    /**
     * Decodes an update into the framebuffer.
     *
     * @param transfer the array through which the bytes travel; its size limits each piece
     * @return the packed changed rectangle, 0 if nothing changed, -1 if the update failed
     */
    long decode(Update update, NativeTarget framebuffer, byte[] transfer) {
        return decode(update, framebuffer, transfer, transfer.length);
    }

    /** The same with a length of the transfer array that may be misstated. */
    long decode(Update update, NativeTarget framebuffer, byte[] transfer, int length) {
        feed.begin(update.data());
        return codec.perform(length, transfer, framebuffer, update.numbers(), objects.handles());
    }

    @Override
    public void close() {
        objects.run();
    }
}
