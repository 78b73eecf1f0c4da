package nn.qv.imagedecoder.internal;

import java.util.concurrent.atomic.AtomicReference;

/** Lets one call at a time through, and none after the closing one. */
public final class UseGuard {
    /** What stands in the way of a call. */
    public enum State {
        FREE,
        IN_USE,
        CLOSED
    }

    private static final Object CLOSED = new Object();

    /** Null, the thread of the running call, or CLOSED. */
    private final AtomicReference<Object> user = new AtomicReference<>();

    /** FREE if the caller may go on, and must leave then. */
    public State enter() {
        return stateOf(user.compareAndExchange(null, Thread.currentThread()));
    }

    /** Ends a call that has entered. */
    public void leave() {
        user.set(null);
    }

    /** FREE if this call has closed it. */
    public State close() {
        return stateOf(user.compareAndExchange(null, CLOSED));
    }

    public boolean isClosed() {
        return user.get() == CLOSED;
    }

    /** Names the running call's thread; it may just have ended. */
    public String describeUser() {
        return user.get() instanceof Thread thread
                ? thread == Thread.currentThread()
                        ? "this very thread, from within a call that is still running"
                        : "thread \"" + thread.getName() + "\""
                : "another thread";
    }

    private static State stateOf(Object witness) {
        if (witness == null) {
            return State.FREE;
        }
        return witness == CLOSED ? State.CLOSED : State.IN_USE;
    }
}
