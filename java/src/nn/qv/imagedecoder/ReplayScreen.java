package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.ByteBuffer;

/** The framebuffer that a recording is played into, which follows the recorded one. */
final class ReplayScreen {
    private final DecoderOptions options;
    private RecordingEntry.Settings settings;
    private Framebuffer framebuffer;

    /** The options are those of the decoder that plays. */
    ReplayScreen(DecoderOptions options) {
        this.options = options;
    }

    Framebuffer framebuffer() {
        return framebuffer;
    }

    /** A change of size or kind brings another framebuffer. */
    void apply(RecordingEntry.Settings changed) throws IOException {
        boolean sameShape =
                settings != null
                        && settings.width() == changed.width()
                        && settings.height() == changed.height()
                        && settings.planes() == changed.planes();
        if (!sameShape) {
            framebuffer = framebufferFor(changed);
        }
        settings = changed;
    }

    private Framebuffer framebufferFor(RecordingEntry.Settings shape) throws IOException {
        try {
            Framebuffer made =
                    shape.planes()
                            ? Framebuffer.planes(
                                    shape.width(), shape.height(), options.chromaSubsampling())
                            : Framebuffer.argb(shape.width(), shape.height());
            UpdateChecks.checkFramebuffer(options, made);
            return made;
        } catch (IllegalArgumentException e) {
            throw new IOException("The recording cannot be shown: " + e.getMessage(), e);
        }
    }

    /** Shows what did not come from updates. */
    void show(RecordingEntry.Picture picture) throws IOException {
        ByteBuffer from = ByteBuffer.wrap(picture.bytes());
        for (ByteBuffer memory : framebuffer.memory()) {
            if (from.remaining() < memory.capacity()) {
                throw new IOException("A picture of the recording is too small");
            }
            memory.put(0, picture.bytes(), from.position(), memory.capacity());
            from.position(from.position() + memory.capacity());
        }
    }

    /** Whether the recorded checksum of an update is one that this decoder should give, too. */
    boolean comparable(RecordingEntry.Update update) {
        boolean otherKernels = settings.portableKernels() && options.codec().dependsOnKernels();
        return switch (update.covering()) {
            case NOTHING -> false;
            case FRAMEBUFFER -> !otherKernels;
            case RECTANGLE -> !otherKernels && !settings.planes(); // Planes have no rectangles.
        };
    }

    /** The checksum of what the update's one covers. */
    int crc(RecordingEntry.Update update) {
        return update.covering() == RecordingEntry.Covering.RECTANGLE
                ? PictureChecksum.of(framebuffer, update.header())
                : PictureChecksum.of(framebuffer);
    }
}
