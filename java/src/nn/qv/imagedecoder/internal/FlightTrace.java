package nn.qv.imagedecoder.internal;

/** Makes an event of each update while a flight recording runs, and nothing at all otherwise. */
final class FlightTrace implements UpdateTrace {
    /** Never committed: tells whether anybody listens, without an object for each question. */
    private static final UpdateEvent PROBE = new UpdateEvent();

    @Override
    public Object begin() {
        if (!PROBE.isEnabled()) {
            return null;
        }
        UpdateEvent event = new UpdateEvent();
        event.begin();
        return event;
    }

    @Override
    public void end(Object token, Outcome outcome) {
        UpdateEvent event = (UpdateEvent) token;
        event.end();
        if (event.shouldCommit()) {
            event.fill(outcome);
            event.commit();
        }
    }
}
