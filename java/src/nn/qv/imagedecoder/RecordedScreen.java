package nn.qv.imagedecoder;

import java.io.IOException;
import java.util.Arrays;
import nn.qv.imagedecoder.internal.RecordingWriter;

/** What a player would have on its screen so far, and by which settings. */
final class RecordedScreen {
    private byte[] settings;

    /** Null if what it shows is not known. */
    private Integer crc;

    /** At the start of a recording. */
    void begin(Framebuffer target, byte[] initial) {
        settings = initial;
        crc = PictureChecksum.ofBlank(target);
    }

    /** At the end of one that is to be appended to. */
    void resume(RecordingEntry.Settings last) {
        settings = RecordingComposer.settings(last);
        crc = null;
    }

    /** Writes settings if a player would have others. */
    void adapt(RecordingWriter writer, Framebuffer target, byte[] needed) throws IOException {
        if (Arrays.equals(needed, settings)) {
            return;
        }
        writer.settings(needed);
        boolean sameShape =
                Arrays.equals(
                        RecordingComposer.shapeOf(needed), RecordingComposer.shapeOf(settings));
        if (!sameShape) {
            crc = PictureChecksum.ofBlank(target);
        }
        settings = needed;
    }

    /** Writes the picture if a player would have another. */
    void show(RecordingWriter writer, Framebuffer target) throws IOException {
        int shown = PictureChecksum.of(target);
        if (crc == null || crc != shown) {
            writer.picture(
                    RecordingComposer.pictureFields(shown), RecordingComposer.compressed(target));
            crc = shown;
        }
    }

    /** An update has been decoded; returns the checksum of what the screen shows now. */
    int drawn(Framebuffer target) {
        crc = PictureChecksum.of(target);
        return crc;
    }
}
