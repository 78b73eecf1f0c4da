package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.TimeUnit;
import nn.qv.imagedecoder.internal.RecordingFormat;
import nn.qv.imagedecoder.internal.RecordingWriter;

/**
 * What a recording holds that is to be appended to.
 *
 * @param version that of the file
 * @param decoders those described so far
 * @param settings those in force at the end
 * @param startMicros when it began, since 1970; 0 if that is unknown
 * @param lastMicros the time of its last update
 * @param index its updates
 * @param size bytes of the file
 * @param end where its last good record ends; less than the size if it was cut, as by a crash
 */
record RecordingHistory(
        int version,
        List<RecordingEntry.Decoder> decoders,
        RecordingEntry.Settings settings,
        long startMicros,
        long lastMicros,
        List<RecordingWriter.Entry> index,
        long size,
        long end) {
    /** Of an empty file. */
    static RecordingHistory none() {
        return new RecordingHistory(
                RecordingFormat.VERSION, List.of(), null, 0, 0, List.of(), 0, 0);
    }

    /**
     * Reads a recording to its end.
     *
     * @throws IOException if it cannot be read, or appending would lose something
     */
    static RecordingHistory read(Path file) throws IOException {
        try (Recording recording = Recording.open(file)) {
            List<RecordingWriter.Entry> index = new ArrayList<>();
            RecordingEntry.Settings settings = recording.initialSettings();
            long last = 0;
            for (RecordingEntry e = recording.next(); e != null; e = recording.next()) {
                if (e instanceof RecordingEntry.Settings changed) {
                    settings = changed;
                } else if (e instanceof RecordingEntry.Update update) {
                    last = update.timeMicros();
                    index.add(new RecordingWriter.Entry(recording.entryOffset(), last));
                }
            }
            recording.checkCanBeAppendedTo();
            return new RecordingHistory(
                    recording.version(),
                    recording.decoders(),
                    settings,
                    recording.startMicros(),
                    last,
                    index,
                    recording.ending() == Recording.Ending.CUT
                            ? recording.size()
                            : recording.position(),
                    recording.position());
        }
    }

    /** How long it has been recorded until now; no less than its last update's time. */
    long microsBeforeNow() {
        long now = TimeUnit.MILLISECONDS.toMicros(System.currentTimeMillis());
        return startMicros > 0 ? Math.max(lastMicros, now - startMicros) : lastMicros;
    }
}
