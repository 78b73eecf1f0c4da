package nn.qv.imagedecoder.internal;

import nn.qv.imagedecoder.RecordingEntry;
import nn.qv.imagedecoder.RecordingPlayer;

/** Prints which updates of a replay failed or gave something else, and draws the conclusion. */
final class ReplayReport {
    private static final int MOST_LINES = 20;
    private static final long FAILED = -1;

    private long lines;
    private long compared;
    private long unexpectedFailures;
    private long differences;

    /** Takes the player's last update. */
    void add(RecordingPlayer player) {
        RecordingEntry.Update update = player.lastUpdate();
        boolean hasChecksum = update.covering() != RecordingEntry.Covering.NOTHING;
        compared += update.resultKnown() || hasChecksum ? 1 : 0;
        boolean failedBefore = update.resultKnown() && update.result() == FAILED;
        if (!player.failure().isEmpty()) {
            unexpectedFailures += failedBefore ? 0 : 1;
            String before =
                    failedBefore
                            ? ", as when it was recorded"
                            : "; when it was recorded, it could be decoded";
            print(player, player.failure() + before);
        }
        boolean sameFailure = player.failure().isEmpty() || failedBefore;
        if (!player.difference().isEmpty() && sameFailure) {
            differences++;
            print(player, update.header() + ": " + player.difference());
        }
    }

    private void print(RecordingPlayer player, String text) {
        lines++;
        if (lines <= MOST_LINES) {
            ReplayCommand.print("update %d: %s%n", player.updates() - 1, text);
        } else if (lines == MOST_LINES + 1) {
            ReplayCommand.print("... and others%n");
        }
    }

    /** Whether there was nothing to compare. */
    boolean isEmpty() {
        return compared == 0;
    }

    ExitStatus outcome() {
        if (unexpectedFailures > 0) {
            return ExitStatus.UPDATE_FAILED;
        }
        return differences > 0 ? ExitStatus.NOT_VERIFIED : ExitStatus.DONE;
    }
}
