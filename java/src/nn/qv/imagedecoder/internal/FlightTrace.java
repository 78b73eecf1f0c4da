package nn.qv.imagedecoder.internal;

/** Makes an event of each update while a flight recording runs. */
final class FlightTrace implements UpdateTrace {
    @Override
    public Object begin() {
        UpdateEvent event = new UpdateEvent();
        if (!event.isEnabled()) {
            return null;
        }
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
