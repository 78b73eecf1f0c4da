package nn.qv.imagedecoder;

import java.util.concurrent.atomic.AtomicReference;

/** Lets one call of a decoder through at a time, and none after the closing one. */
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

    /** Ends a call that has entered. */
    void leave() {
        user.set(null);
    }

    /** Lets nobody in from here on; closing again does nothing. */
    void close() {
        expectNone(user.compareAndExchange(null, CLOSED));
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
                            + "; it serves one call at a time, and close() waits for none: let the"
                            + " thread that decodes also close");
        }
    }

    private static String describe(Thread thread) {
        return thread == Thread.currentThread()
                ? "this very thread, from within a call that is still running"
                : "thread \"" + thread.getName() + "\"";
    }
}
