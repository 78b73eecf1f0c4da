package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.ByteBuffer;
import nn.qv.imagedecoder.internal.BufferSource;
import nn.qv.imagedecoder.internal.ByteSource;
import nn.qv.imagedecoder.internal.Counters;
import nn.qv.imagedecoder.internal.FailureLog;
import nn.qv.imagedecoder.internal.NativeCodec;
import nn.qv.imagedecoder.internal.NativeObjects;
import nn.qv.imagedecoder.internal.NativeTarget;
import nn.qv.imagedecoder.internal.NativeUpdate;
import nn.qv.imagedecoder.internal.SourceEndedException;
import nn.qv.imagedecoder.internal.TransferArrays;
import nn.qv.imagedecoder.internal.UpdateFeed;
import nn.qv.imagedecoder.internal.UpdateTrace;

/** One update after the other through the native objects, by one thread at a time. */
final class UpdateRun {
    private static final long FAILED = -1;
    private static final UpdateTrace TRACE = UpdateTrace.create();

    private final DecoderOptions options;
    private final NativeCodec codec;
    private final UpdateFeed feed;
    private final NativeObjects objects;
    private final Recorder recorder;
    private final Counters counters = new Counters();
    private final FailureLog failures = new FailureLog();
    private final TransferArrays transfers = new TransferArrays();

    /** Of the running update, or of the last one. */
    private long lastResult;

    private int consumed;
    private long feedNanos;

    /** The recorder is null if the connection is not recorded. */
    UpdateRun(DecoderOptions options, UpdateFeed feed, NativeObjects objects, Recorder recorder) {
        this.options = options;
        this.feed = feed;
        this.objects = objects;
        this.recorder = recorder;
        codec = options.codec().nativeCodec();
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

    /** What the native method returned, -1 for a failed update. */
    long lastResult() {
        return lastResult;
    }

    void checkFramebuffer(Framebuffer framebuffer) {
        UpdateChecks.checkFramebuffer(options, framebuffer);
    }

    /** Decodes an update and settles its source, which is not open yet. */
    ChangedRectangle decode(UpdateHeader header, ByteSource source, Framebuffer framebuffer)
            throws IOException {
        long started = System.nanoTime();
        Object token = TRACE.begin();
        String failure = null;
        begin(source);
        try {
            open(header, source, started);
            perform(header, source, framebuffer);
            source.settle(consumed);
            counters.addUpdate(consumed);
            return ChangedRectangle.unpack(lastResult, header, framebuffer);
        } catch (IOException | RuntimeException | Error e) {
            failure = e.toString();
            counters.addRefusal();
            giveUp(source, e);
            throw e;
        } finally {
            feed.end();
            long decodeNanos = System.nanoTime() - started - feedNanos;
            counters.addNanos(feedNanos, decodeNanos);
            if (token != null) {
                TRACE.end(token, outcome(header, decodeNanos, failure));
            }
        }
    }

    private void begin(ByteSource source) {
        lastResult = FAILED;
        consumed = 0;
        feedNanos = 0;
        feed.begin(source);
    }

    private void open(UpdateHeader header, ByteSource source, long started) throws IOException {
        try {
            source.open();
        } catch (SourceEndedException e) {
            throw refused(UpdateFailures.ended(options.codec(), header, e));
        } finally {
            feedNanos = System.nanoTime() - started;
        }
    }

    private void giveUp(ByteSource source, Throwable reason) {
        if (reason instanceof UpdateException e) {
            failures.add(e.getMessage());
        }
        try {
            source.settle(-1);
        } catch (IOException | RuntimeException e) {
            reason.addSuppressed(e);
        }
    }

    /** Finds the result and the number of bytes that the update had, or throws why it failed. */
    private void perform(UpdateHeader header, ByteSource source, Framebuffer framebuffer)
            throws IOException {
        checkRectangle(header, framebuffer, source);
        if (recorder == null) {
            performInTurn(header, source, framebuffer);
            return;
        }
        recorder.begin(framebuffer);
        try {
            performInTurn(header, source, framebuffer);
        } finally {
            recorder.leave();
        }
    }

    /** While no other decoder of the same recording draws. */
    private void performInTurn(UpdateHeader header, ByteSource source, Framebuffer framebuffer)
            throws IOException {
        byte[] transfer = transfers.forBytes(source.most());
        lastResult = perform(transfer, targetOf(framebuffer), header);
        consumed = feed.consumedBytes();
        feedNanos += feed.nanos();
        if (lastResult != FAILED && feed.consumedTooMuch()) {
            consumed = exactlyConsumed(header, framebuffer);
        }
        if (recorder != null) {
            recorder.end(header, feed.delivered(consumed), lastResult);
        }
        if (lastResult == FAILED) {
            throw UpdateFailures.of(options.codec(), header, feed, source);
        }
    }

    private void checkRectangle(UpdateHeader header, Framebuffer framebuffer, ByteSource source)
            throws UpdateException {
        String problem = UpdateChecks.rectangleProblem(options.codec(), header, framebuffer);
        if (!problem.isEmpty()) {
            throw refused(
                    new UpdateException(
                            UpdateException.Reason.RECTANGLE,
                            source.inStepAfterFailure(),
                            problem));
        }
    }

    /** Leaves a note in the recording for an update that does not get into it. */
    private UpdateException refused(UpdateException reason) {
        if (recorder != null) {
            recorder.note(reason.getMessage());
        }
        return reason;
    }

    /**
     * The number of bytes that an update had whose end lies just before a piece that was read. The
     * library cannot hand back enough then, so the bytes are decoded once more in a single piece,
     * without drawing them.
     */
    private int exactlyConsumed(UpdateHeader header, Framebuffer framebuffer) {
        byte[] whole = feed.delivered();
        BufferSource again = new BufferSource(ByteBuffer.wrap(whole));
        again.open();
        feed.begin(again);
        perform(
                new byte[whole.length],
                NativeTarget.none(framebuffer.width(), framebuffer.height()),
                header);
        return feed.consumedBytes();
    }

    private long perform(byte[] transfer, NativeTarget target, UpdateHeader header) {
        return codec.perform(transfer, target, nativeUpdate(header), objects.handles());
    }

    private static NativeTarget targetOf(Framebuffer framebuffer) {
        return new NativeTarget(
                framebuffer.width(),
                framebuffer.height(),
                framebuffer.argbOrNull(),
                framebuffer.planeOrNull(0),
                framebuffer.planeOrNull(1),
                framebuffer.planeOrNull(2));
    }

    private static NativeUpdate nativeUpdate(UpdateHeader header) {
        return new NativeUpdate(
                header.quality(), header.x(), header.y(), header.width(), header.height());
    }

    private UpdateTrace.Outcome outcome(UpdateHeader header, long decodeNanos, String failure) {
        NativeUpdate update = nativeUpdate(header);
        return new UpdateTrace.Outcome(
                codec.name(), update, consumed, feedNanos, decodeNanos, failure);
    }
}
