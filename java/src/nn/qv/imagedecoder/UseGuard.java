package nn.qv.imagedecoder;

import java.util.concurrent.atomic.AtomicReference;

/**
 * Lets one call of a decoder through at a time, and none once the decoder is closed. Whichever
 * comes last, closing or the end of the running call, releases the decoder.
 */
final class UseGuard {
    private static final Object CLOSED = new Object();

    /** Null, the thread of the running call, or CLOSED. */
    private final AtomicReference<Object> user = new AtomicReference<>();

    /** Begins a call, which must leave. */
    void enter() {
        Object other = user.compareAndExchange(null, Thread.currentThread());
        if (other == CLOSED) {
            throw new DecoderClosedException("The decoder is closed");
        }
        expectNone(other);
    }

    /**
     * Ends a call that has entered.
     *
     * @return whether the decoder was closed meanwhile, so that the caller must release it
     */
    boolean leave() {
        return !user.compareAndSet(Thread.currentThread(), null);
    }

    /**
     * Refuses all calls from here on.
     *
     * @return whether the caller must release the decoder: no call is running, and it was open
     */
    boolean close() {
        return user.getAndSet(CLOSED) == null;
    }

    /** For a running call. */
    void expectOpen() {
        if (isClosed()) {
            throw new DecoderClosedException("The decoder was closed during this update");
        }
    }

    boolean isClosed() {
        return user.get() == CLOSED;
    }

    /** No other call, that is. */
    private static void expectNone(Object user) {
        if (user instanceof Thread thread) {
            throw new DecoderInUseException(
                    "The decoder is in use by "
                            + describe(thread)
                            + "; it serves one call at a time");
        }
    }

    private static String describe(Thread thread) {
        return thread == Thread.currentThread()
                ? "this very thread, from within a call that is still running"
                : "thread \"" + thread.getName() + "\"";
    }
}
