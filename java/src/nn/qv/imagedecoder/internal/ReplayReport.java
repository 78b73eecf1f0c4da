package nn.qv.imagedecoder.internal;

import nn.qv.imagedecoder.RecordingEntry;
import nn.qv.imagedecoder.RecordingPlayer;

/** Prints which updates of a replay failed or gave something else, and draws the conclusion. */
final class ReplayReport {
    private static final int MOST_LINES = 20;
    private static final long FAILED = -1;

    private long lines;
    private long results;
    private long unexpectedFailures;
    private long differences;

    /** Takes the player's last update. */
    void add(RecordingPlayer player) {
        RecordingEntry.Update update = player.lastUpdate();
        results += update.resultKnown() ? 1 : 0;
        boolean failedBefore = update.resultKnown() && update.result() == FAILED;
        if (!player.failure().isEmpty()) {
            unexpectedFailures += failedBefore ? 0 : 1;
            print(player, player.failure() + before(update, failedBefore));
        }
        boolean sameFailure = player.failure().isEmpty() || failedBefore;
        if (!player.difference().isEmpty() && sameFailure) {
            differences++;
            print(player, update.header() + ": " + player.difference());
        }
    }

    private static String before(RecordingEntry.Update update, boolean failed) {
        if (failed) {
            return ", as when it was recorded";
        }
        return update.resultKnown()
                ? "; when it was recorded, it could be decoded"
                : "; whether it failed when it was recorded is unknown";
    }

    private void print(RecordingPlayer player, String text) {
        lines++;
        if (lines <= MOST_LINES) {
            ReplayCommand.print("update %d: %s%n", player.updates() - 1, text);
        } else if (lines == MOST_LINES + 1) {
            ReplayCommand.print("... and others%n");
        }
    }

    /** Whether nothing was compared by the player up to its last update. */
    boolean isEmpty(RecordingPlayer player) {
        return results == 0 && player.checksums() == 0;
    }

    ExitStatus outcome() {
        if (unexpectedFailures > 0) {
            return ExitStatus.UPDATE_FAILED;
        }
        return differences > 0 ? ExitStatus.NOT_VERIFIED : ExitStatus.DONE;
    }
}
