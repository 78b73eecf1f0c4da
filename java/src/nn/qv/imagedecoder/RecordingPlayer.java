package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.file.Path;
import java.util.concurrent.TimeUnit;

/**
 * Plays a recording: decodes its updates again, as fast as possible or as they came, and compares
 * results and pictures with what was recorded.
 *
 * <pre>{@code
 * try (RecordingPlayer player = RecordingPlayer.open(Path.of("bug.rcrec"), 0)) {
 *     while (player.step()) {
 *         if (!player.difference().isEmpty()) {
 *             System.out.println(player.updates() + ": " + player.difference());
 *         }
 *     }
 *     BufferedImage last = player.framebuffer().toBufferedImage();
 * }
 * }</pre>
 */
public final class RecordingPlayer implements AutoCloseable {
    private final Recording recording;
    private final ReplayDecoders decoders;
    private final ReplayScreen screen = new ReplayScreen();
    private RecordingEntry.Update last;
    private String difference = "";
    private String failure = "";
    private long updates;
    private long failed;
    private long differing;
    private long checksums;

    private RecordingPlayer(Recording recording, int threads) {
        this.recording = recording;
        decoders = new ReplayDecoders(threads);
    }

    /**
     * Opens a recording and a decoder for it. A recording of several decoders gets as many, which
     * draw into one framebuffer.
     *
     * @param file the recording
     * @param threads worker threads of each decoder, 1 to {@link DecoderOptions#MAX_THREADS}; 0 for
     *     as many as the recording needs
     * @return the player, before the first update
     * @throws IOException if the file cannot be read or is no recording
     * @throws IllegalArgumentException if the number of threads is out of range, or the recording
     *     cannot be decoded with so many
     */
    public static RecordingPlayer open(Path file, int threads) throws IOException {
        DecoderOptions.checkThreads(threads);
        RecordingPlayer player = new RecordingPlayer(Recording.open(file), threads);
        try {
            player.begin();
            return player;
        } catch (IOException | RuntimeException | Error e) {
            player.close();
            throw e;
        }
    }

    /**
     * Plays up to and with the next update.
     *
     * @return false if there is none
     * @throws IOException if the file cannot be read, or another decoder or framebuffer that begins
     *     there cannot be made
     */
    public boolean step() throws IOException {
        difference = "";
        failure = "";
        for (RecordingEntry entry = recording.next(); entry != null; entry = recording.next()) {
            if (entry instanceof RecordingEntry.Settings changed) {
                apply(changed);
            } else if (entry instanceof RecordingEntry.Decoder added) {
                add(added);
            } else if (entry instanceof RecordingEntry.Picture picture) {
                screen.show(picture);
            } else if (entry instanceof RecordingEntry.Update update) {
                play(update);
                return true;
            }
        }
        return false;
    }

    /**
     * Plays everything.
     *
     * @param inRealTime whether to keep the pace of the recording; otherwise as fast as possible
     * @return whether every update gave what was recorded
     * @throws IOException as {@link #step}
     * @throws InterruptedException if the thread is interrupted while it keeps the pace
     */
    public boolean play(boolean inRealTime) throws IOException, InterruptedException {
        long start = System.nanoTime();
        while (step()) {
            if (inRealTime) {
                keepPace(start);
            }
        }
        return differing == 0;
    }

    /**
     * Waits until the last update is due, for whoever shows the pictures while they play.
     *
     * @param startNanos System.nanoTime() when the recording began to play
     * @throws InterruptedException if the thread is interrupted meanwhile
     */
    public void keepPace(long startNanos) throws InterruptedException {
        long due = startNanos + TimeUnit.MICROSECONDS.toNanos(last.timeMicros());
        TimeUnit.NANOSECONDS.sleep(due - System.nanoTime());
    }

    /**
     * The recording that is played.
     *
     * @return the recording, for its properties and its ending
     */
    public Recording recording() {
        return recording;
    }

    /**
     * The framebuffer that is drawn into; a change of size brings another one.
     *
     * @return the framebuffer
     */
    public Framebuffer framebuffer() {
        return screen.framebuffer();
    }

    /**
     * The update of the last {@link #step}.
     *
     * @return the update, null before the first one
     */
    public RecordingEntry.Update lastUpdate() {
        return last;
    }

    /**
     * What the last update did otherwise than recorded.
     *
     * @return a text for people, empty if there is no difference
     */
    public String difference() {
        return difference;
    }

    /**
     * Why the last update failed.
     *
     * @return the message, empty if it did not
     */
    public String failure() {
        return failure;
    }

    /**
     * The updates so far.
     *
     * @return their number
     */
    public long updates() {
        return updates;
    }

    /**
     * The updates so far that failed.
     *
     * @return their number
     */
    public long failed() {
        return failed;
    }

    /**
     * The updates so far that did otherwise than recorded.
     *
     * @return their number
     */
    public long differing() {
        return differing;
    }

    /**
     * The pictures so far that were compared by their checksums.
     *
     * @return their number
     */
    public long checksums() {
        return checksums;
    }

    /**
     * Figures of all decoders together.
     *
     * @return the figures as they are now
     */
    public DecoderStatistics statistics() {
        return decoders.statistics();
    }

    @Override
    public void close() throws IOException {
        decoders.close();
        recording.close();
    }

    private void begin() throws IOException {
        screen.add(decoders.open(recording.decoders().get(0)));
        apply(recording.initialSettings());
    }

    private void add(RecordingEntry.Decoder added) throws IOException {
        try {
            screen.add(decoders.open(added));
        } catch (IllegalArgumentException e) {
            throw ReplayScreen.cannotBeShown(e);
        }
    }

    private void apply(RecordingEntry.Settings changed) throws IOException {
        screen.apply(changed);
        decoders.apply(changed);
    }

    private void play(RecordingEntry.Update update) {
        last = update;
        updates++;
        ScreenDecoder decoder = decoders.get(update.decoder());
        long result;
        try {
            decoder.decode(update.header(), update.payload(), screen.framebuffer());
            result = decoder.lastResult();
        } catch (UpdateException e) {
            failure = e.getMessage();
            failed++;
            result = -1;
        }
        compare(update, result);
    }

    private void compare(RecordingEntry.Update update, long result) {
        if (update.resultKnown() && result != update.result()) {
            difference = ReplayDifference.ofResults(result, update, screen.framebuffer());
        } else if (screen.comparable(update)) {
            checksums++;
            if (screen.crc(update) != update.pictureCrc()) {
                difference = ReplayDifference.OF_PICTURE;
            }
        }
        if (!difference.isEmpty()) {
            differing++;
        }
    }
}
