package nn.qv.imagedecoder.internal;

/** Who may want to know of each update while it is decoded: the flight recorder, if it is there. */
public interface UpdateTrace {
    /** How an update went. */
    record Outcome(
            String codec,
            NativeUpdate update,
            int bytes,
            long feedNanos,
            long decodeNanos,
            String failure) {}

    /** Nobody. */
    UpdateTrace NONE =
            new UpdateTrace() {
                @Override
                public Object begin() {
                    return null;
                }

                @Override
                public void end(Object token, Outcome outcome) {}
            };

    /** Begins an update; null if nobody listens, and then {@link #end} need not be called. */
    Object begin();

    /** Ends the update that the token stands for. */
    void end(Object token, Outcome outcome);

    /** The flight recorder where module {@code jdk.jfr} is in this JVM, otherwise nobody. */
    static UpdateTrace create() {
        try {
            Class.forName("jdk.jfr.Event");
            return new FlightTrace();
        } catch (ClassNotFoundException | LinkageError e) {
            return NONE;
        }
    }
}
