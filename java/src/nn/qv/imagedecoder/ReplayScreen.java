package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.List;

/** The framebuffer that a recording is played into, which follows the recorded one. */
final class ReplayScreen {
    /** Of the decoders that draw into it, by their index. */
    private final List<DecoderOptions> options = new ArrayList<>();

    private RecordingEntry.Settings settings;
    private Framebuffer framebuffer;

    Framebuffer framebuffer() {
        return framebuffer;
    }

    /** Another decoder draws into it from here on. */
    void add(DecoderOptions decoder) throws IOException {
        options.add(decoder);
        if (framebuffer != null) {
            check(framebuffer);
        }
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
                                    shape.width(),
                                    shape.height(),
                                    options.get(0).chromaSubsampling())
                            : Framebuffer.argb(shape.width(), shape.height());
            check(made);
            return made;
        } catch (IllegalArgumentException e) {
            throw cannotBeShown(e);
        }
    }

    /** One framebuffer has to serve all decoders. */
    private void check(Framebuffer shared) throws IOException {
        try {
            options.forEach(decoder -> UpdateChecks.checkFramebuffer(decoder, shared));
        } catch (IllegalArgumentException e) {
            throw cannotBeShown(e);
        }
    }

    static IOException cannotBeShown(IllegalArgumentException reason) {
        return new IOException("The recording cannot be shown: " + reason.getMessage(), reason);
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
        Codec codec = options.get(update.decoder()).codec();
        boolean otherKernels = settings.portableKernels() && codec.dependsOnKernels();
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
