package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.InvalidPathException;
import java.nio.file.Path;
import java.util.Locale;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.RecordingPlayer;

/** The command {@code replay}. */
final class ReplayCommand {
    private Path file;
    private boolean realTime;
    private int threads;

    /** Takes all arguments of the program; throws IllegalArgumentException if they are wrong. */
    ReplayCommand(String[] arguments) {
        for (int i = 1; i < arguments.length; i++) {
            switch (arguments[i]) {
                case "--realtime" -> realTime = true;
                case "--threads" -> threads = number(arguments, ++i);
                default -> file = path(arguments[i]);
            }
        }
        if (file == null) {
            throw new IllegalArgumentException("replay needs a recording");
        }
    }

    private static int number(String[] arguments, int index) {
        String text = index < arguments.length ? arguments[index] : "";
        try {
            int number = Integer.parseInt(text);
            if (number >= 1 && number <= DecoderOptions.MAX_THREADS) {
                return number;
            }
        } catch (NumberFormatException e) {
            // As wrong as a number out of range.
        }
        throw new IllegalArgumentException(
                "--threads needs a number from 1 to " + DecoderOptions.MAX_THREADS);
    }

    private Path path(String argument) {
        if (argument.startsWith("-")) {
            throw new IllegalArgumentException("Unknown option: " + argument);
        }
        if (file != null) {
            throw new IllegalArgumentException("One recording at a time: " + argument);
        }
        try {
            return Path.of(argument);
        } catch (InvalidPathException e) {
            throw new IllegalArgumentException("Not a path: " + argument, e);
        }
    }

    ExitStatus run() throws IOException, InterruptedException {
        if (Files.isDirectory(file)) {
            throw new IOException(file + ": is a folder");
        }
        FailureLog.disable();
        try (RecordingPlayer player = RecordingPlayer.open(file, threads)) {
            ReplayReport report = new ReplayReport();
            long start = System.nanoTime();
            while (player.step()) {
                report.add(player);
                if (realTime) {
                    player.keepPace(start);
                }
            }
            double seconds = (System.nanoTime() - start) / 1e9;
            print(
                    "%d updates in %.3f s, %d failed, %d pictures compared, %d differ%n",
                    player.updates(),
                    seconds,
                    player.failed(),
                    player.checksums(),
                    player.differing());
            ExitStatus end = reportEnd(player.recording());
            ExitStatus outcome = report.outcome();
            if (outcome == ExitStatus.DONE && end == ExitStatus.DONE && report.isEmpty(player)) {
                print("The recording holds nothing that can be compared here%n");
                return ExitStatus.NOT_VERIFIED;
            }
            return outcome != ExitStatus.DONE ? outcome : end;
        }
    }

    private static ExitStatus reportEnd(Recording recording) {
        String how =
                switch (recording.ending()) {
                    case NOT_REACHED, COMPLETE -> "";
                    case CUT -> "is cut in the record at byte";
                    case DAMAGED -> "is damaged at byte";
                    case TOO_NEW -> "needs a later version from byte";
                };
        if (how.isEmpty()) {
            return ExitStatus.DONE;
        }
        print("The recording %s %d%n", how, recording.position());
        return ExitStatus.RECORDING_ENDS;
    }

    /** Numbers must not follow the locale. */
    static void print(String format, Object... arguments) {
        System.out.printf(Locale.ROOT, format, arguments);
    }
}
