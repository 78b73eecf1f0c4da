package nn.qv.imagedecoder;

/** How a played update differs from the recorded one, as a text for people. */
final class ReplayDifference {
    private static final long FAILED = -1;

    static final String OF_PICTURE = "the picture differs from the recorded one";

    private ReplayDifference() {}

    /** For two results of the native method that differ. */
    static String ofResults(long played, RecordingEntry.Update recorded, Framebuffer framebuffer) {
        if (played == FAILED) {
            return "the update failed, and was decoded when it was recorded";
        }
        if (recorded.result() == FAILED) {
            return "the update was decoded, and failed when it was recorded";
        }
        ChangedRectangle now = ChangedRectangle.unpack(played, recorded.header(), framebuffer);
        ChangedRectangle then =
                ChangedRectangle.unpack(recorded.result(), recorded.header(), framebuffer);
        return now.equals(then)
                ? "the changed area differs beyond the framebuffer's edges"
                : "changed " + text(now) + ", recorded is " + text(then);
    }

    private static String text(ChangedRectangle changed) {
        return changed.isEmpty()
                ? "nothing"
                : changed.width()
                        + "x"
                        + changed.height()
                        + " at ("
                        + changed.x()
                        + ", "
                        + changed.y()
                        + ")";
    }
}
