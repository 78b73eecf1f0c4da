package nn.qv.demo;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.RecordingEntry;

/**
 * The updates of a recording in memory.
 *
 * @param width framebuffer width in pixels
 * @param height framebuffer height in pixels
 */
record ScreenUpdates(int width, int height, List<RecordingEntry.Update> updates) {
    static ScreenUpdates load(Path file) throws IOException {
        List<RecordingEntry.Update> updates = new ArrayList<>();
        try (Recording recording = Recording.open(file)) {
            for (RecordingEntry e = recording.next(); e != null; e = recording.next()) {
                if (e instanceof RecordingEntry.Update update) {
                    updates.add(update);
                }
            }
            if (recording.ending() != Recording.Ending.COMPLETE) {
                throw new IOException(file + " is " + recording.ending());
            }
            RecordingEntry.Settings settings = recording.initialSettings();
            return new ScreenUpdates(settings.width(), settings.height(), updates);
        }
    }

    long bytes() {
        return updates.stream().mapToLong(update -> update.payload().length).sum();
    }
}
