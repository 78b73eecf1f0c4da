package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.ByteBuffer;
import nn.qv.imagedecoder.internal.BufferSource;
import nn.qv.imagedecoder.internal.ByteSource;
import nn.qv.imagedecoder.internal.Counters;
import nn.qv.imagedecoder.internal.NativeCodec;
import nn.qv.imagedecoder.internal.NativeObjects;
import nn.qv.imagedecoder.internal.NativeTarget;
import nn.qv.imagedecoder.internal.NativeUpdate;
import nn.qv.imagedecoder.internal.UpdateFeed;
import nn.qv.imagedecoder.internal.UpdateTrace;

/** One update after the other through the native objects, by one thread at a time. */
final class UpdateRun {
    private static final long FAILED = -1;
    private static final int MACROBLOCK = 16;
    private static final int LEAST_TRANSFER = 1 << 12;
    private static final int TRANSFER_SIZES = 5;
    private static final UpdateTrace TRACE = UpdateTrace.create();

    private final DecoderOptions options;
    private final NativeCodec codec;
    private final UpdateFeed feed;
    private final NativeObjects objects;
    private final Recorder recorder;
    private final Counters counters = new Counters();

    /** One of each size, because the library copies the array whole for every update. */
    private final byte[][] transfers = new byte[TRANSFER_SIZES][];

    private long lastResult;

    /** The recorder is null if the connection is not recorded. */
    UpdateRun(DecoderOptions options, UpdateFeed feed, NativeObjects objects, Recorder recorder) {
        this.options = options;
        this.feed = feed;
        this.objects = objects;
        this.recorder = recorder;
        codec = NativeCodec.valueOf(options.codec().name());
    }

    void setContrast(int level) {
        codec.setContrast(objects.handles().renderer(), level);
        if (recorder != null) {
            recorder.setContrast(level);
        }
    }

    void setPostprocessing(boolean enabled) {
        codec.setPostprocessing(objects.handles().renderer(), enabled);
        if (recorder != null) {
            recorder.setPostprocessing(enabled);
        }
    }

    DecoderStatistics statistics() {
        return new DecoderStatistics(
                counters.updates(),
                counters.refusals(),
                counters.bytes(),
                counters.feedNanos(),
                counters.decodeNanos());
    }

    long lastResult() {
        return lastResult;
    }

    /** What the viewer can get wrong about a framebuffer, as opposed to what a device sends. */
    void checkFramebuffer(Framebuffer framebuffer) {
        if (framebuffer.chromaSubsampling().isEmpty()) {
            return;
        }
        if (options.codec() == Codec.LBE) {
            throw new IllegalArgumentException(
                    "LBE updates cannot be drawn into planes: use Framebuffer.argb");
        }
        if (framebuffer.chromaSubsampling().get() != options.chromaSubsampling()) {
            throw new IllegalArgumentException(
                    "The planes are for "
                            + framebuffer.chromaSubsampling().get()
                            + ", but the decoder for "
                            + options.chromaSubsampling());
        }
    }

    /**
     * Decodes an update and settles its source.
     *
     * @param started System.nanoTime() when the source began to be opened
     */
    ChangedRectangle decode(
            UpdateHeader header, ByteSource source, Framebuffer framebuffer, long started)
            throws IOException {
        Object token = TRACE.begin();
        long opened = System.nanoTime();
        long feedNanos = opened - started;
        String failure = null;
        int consumed = 0;
        lastResult = FAILED;
        feed.begin(source);
        try {
            checkRectangle(header, framebuffer, source);
            perform(header, source, framebuffer, opened);
            consumed = feed.consumedBytes();
            feedNanos += feed.nanos();
            if (lastResult == FAILED) {
                throw failed(header, source, consumed);
            }
            consumed = exactlyConsumed(header, framebuffer, consumed);
            record(header, consumed);
            source.settle(consumed);
            counters.addUpdate(consumed);
            return ChangedRectangle.unpack(lastResult, header, framebuffer);
        } catch (IOException | RuntimeException e) {
            failure = e.toString();
            counters.addRefusal();
            giveUp(source, e);
            throw e;
        } finally {
            feed.end();
            long decodeNanos = System.nanoTime() - started - feedNanos;
            counters.addNanos(feedNanos, decodeNanos);
            if (token != null) {
                NativeUpdate update = nativeUpdate(header);
                TRACE.end(
                        token,
                        new UpdateTrace.Outcome(
                                codec.name(), update, consumed, feedNanos, decodeNanos, failure));
            }
        }
    }

    private void perform(
            UpdateHeader header, ByteSource source, Framebuffer framebuffer, long started)
            throws IOException {
        if (recorder != null) {
            recorder.begin(framebuffer, started);
        }
        NativeTarget target =
                new NativeTarget(
                        framebuffer.width(),
                        framebuffer.height(),
                        framebuffer.argbOrNull(),
                        framebuffer.planeOrNull(0),
                        framebuffer.planeOrNull(1),
                        framebuffer.planeOrNull(2));
        lastResult =
                codec.perform(
                        transferFor(source.most()),
                        target,
                        nativeUpdate(header),
                        objects.handles());
    }

    /**
     * The number of bytes that the update had. If its end lies just before a piece that was read,
     * the library cannot hand back enough; then the bytes are decoded once more in a single piece,
     * without drawing them.
     */
    private int exactlyConsumed(UpdateHeader header, Framebuffer framebuffer, int consumed) {
        if (!feed.consumedTooMuch()) {
            return consumed;
        }
        byte[] whole = feed.delivered();
        feed.begin(new BufferSource(ByteBuffer.wrap(whole)));
        codec.perform(
                new byte[whole.length],
                NativeTarget.none(framebuffer.width(), framebuffer.height()),
                nativeUpdate(header),
                objects.handles());
        return feed.consumedBytes();
    }

    private void record(UpdateHeader header, int consumed) {
        if (recorder != null) {
            recorder.end(header, feed.delivered(consumed), lastResult);
        }
    }

    private void checkRectangle(UpdateHeader header, Framebuffer framebuffer, ByteSource source)
            throws UpdateException {
        String problem = null;
        if (header.x() >= framebuffer.width() || header.y() >= framebuffer.height()) {
            problem = "begins outside";
        } else if (header.width() > wholeMacroblocks(framebuffer.width())
                || header.height() > wholeMacroblocks(framebuffer.height())) {
            problem = "is larger than";
        } else if (framebuffer.chromaSubsampling().isPresent()
                && (header.x() != 0 || header.y() != 0)) {
            problem = "does not begin at (0, 0), as is needed for planes, in";
        }
        if (problem != null) {
            String message =
                    String.format(
                            "The rectangle of %s update %s %s the framebuffer of %dx%d",
                            codec, header, problem, framebuffer.width(), framebuffer.height());
            if (recorder != null) {
                recorder.note(message);
            }
            throw new UpdateException(
                    UpdateException.Reason.RECTANGLE, source.inStepAfterFailure(), message);
        }
    }

    private static void giveUp(ByteSource source, Exception reason) {
        try {
            source.settle(-1);
        } catch (IOException e) {
            reason.addSuppressed(e);
        }
    }

    /** What to throw for a failed update: what its source has thrown, if it has. */
    private IOException failed(UpdateHeader header, ByteSource source, int consumed) {
        record(header, consumed);
        Throwable cause = feed.failure();
        if (cause instanceof IOException e) {
            return e;
        }
        if (cause instanceof RuntimeException e) {
            throw e;
        }
        if (cause instanceof Error e) {
            throw e;
        }
        String line = feed.failureLine();
        return new UpdateException(
                reason(line),
                source.inStepAfterFailure(),
                String.format(
                        "%s update %s failed after %d bytes: %s",
                        codec,
                        header,
                        consumed,
                        line == null ? "its quality is unknown" : textOf(line)));
    }

    private static UpdateException.Reason reason(String line) {
        if (line == null) {
            return UpdateException.Reason.QUALITY;
        }
        return line.endsWith("no more bytes!")
                ? UpdateException.Reason.TRUNCATED
                : UpdateException.Reason.CORRUPT;
    }

    /** The part of a log line behind the native method's name. */
    private String textOf(String line) {
        String method = "perform" + codec + " ";
        int at = line.indexOf(method);
        return at < 0 ? line : line.substring(at + method.length());
    }

    /** The smallest array that holds the bytes, or the largest one. */
    private byte[] transferFor(int bytes) {
        int size = 0;
        while (size < TRANSFER_SIZES - 1 && LEAST_TRANSFER << size < bytes) {
            size++;
        }
        if (transfers[size] == null) {
            transfers[size] = new byte[LEAST_TRANSFER << size];
        }
        return transfers[size];
    }

    private static NativeUpdate nativeUpdate(UpdateHeader header) {
        return new NativeUpdate(
                header.quality(), header.x(), header.y(), header.width(), header.height());
    }

    private static int wholeMacroblocks(int pixels) {
        return (pixels + MACROBLOCK - 1) / MACROBLOCK * MACROBLOCK;
    }
}
