package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.nio.file.InvalidPathException;
import java.nio.file.Path;
import nn.qv.imagedecoder.NativeLoader;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.RecordingPlayer;

/** What {@code java -jar imagedecoder.jar} does. */
public final class Main {
    private static final String USAGE =
            """
            usage: java -jar imagedecoder.jar replay [--realtime] [--threads N] FILE
                   java -jar imagedecoder.jar version

            replay   decodes a recording again and compares every picture with what was recorded;
                     as fast as possible, or as it came with --realtime. N is 1 to 64.
            version  says where the native library is and whether it can be loaded

            Exit status: 0 all as recorded, 1 an update did otherwise or the recording is damaged,
            2 wrong arguments, 3 the file cannot be read or the native library not be loaded.
            A recording that was cut, as by a crash, is played up to the cut and counts as whole.
            """;

    private static final int DIFFERENT = 1;
    private static final int WRONG_ARGUMENTS = 2;
    private static final int UNUSABLE = 3;
    private static final int MOST_DIFFERENCES_TOLD = 20;

    private Path file;
    private boolean realTime;
    private int threads;

    private Main() {}

    /** Ends the JVM with an exit status as in the usage text. */
    public static void main(String[] arguments) throws InterruptedException {
        int status;
        try {
            status = new Main().run(arguments);
        } catch (IllegalArgumentException e) {
            System.err.println(e.getMessage());
            System.err.print(USAGE);
            status = WRONG_ARGUMENTS;
        } catch (IOException | UnsatisfiedLinkError e) {
            System.err.println(e instanceof IOException ? e : e.getMessage());
            status = UNUSABLE;
        }
        System.exit(status);
    }

    private int run(String[] arguments) throws IOException, InterruptedException {
        String command = arguments.length > 0 ? arguments[0] : "";
        switch (command) {
            case "replay" -> {
                parse(arguments);
                return replay();
            }
            case "version" -> {
                NativeLoader.load();
                System.out.println(
                        "interface version "
                                + NativeLoader.INTERFACE_VERSION
                                + ", "
                                + NativeLoader.origin());
                return 0;
            }
            case "--help", "-h" -> {
                System.out.print(USAGE);
                return 0;
            }
            default -> throw new IllegalArgumentException("What to do? \"" + command + "\"");
        }
    }

    private void parse(String[] arguments) {
        for (int i = 1; i < arguments.length; i++) {
            switch (arguments[i]) {
                case "--realtime" -> realTime = true;
                case "--threads" -> threads = number(arguments, ++i);
                default -> file = path(arguments[i]);
            }
        }
        if (file == null) {
            throw new IllegalArgumentException("Which file?");
        }
    }

    private static int number(String[] arguments, int index) {
        try {
            return Integer.parseInt(arguments[index]);
        } catch (NumberFormatException | ArrayIndexOutOfBoundsException e) {
            throw new IllegalArgumentException("--threads needs a number", e);
        }
    }

    private Path path(String argument) {
        if (file != null || argument.startsWith("-")) {
            throw new IllegalArgumentException("Not understood: " + argument);
        }
        try {
            return Path.of(argument);
        } catch (InvalidPathException e) {
            throw new IllegalArgumentException("Not a path: " + argument, e);
        }
    }

    private int replay() throws IOException, InterruptedException {
        try (RecordingPlayer player = RecordingPlayer.open(file, threads)) {
            long start = System.nanoTime();
            play(player, start);
            double seconds = (System.nanoTime() - start) / 1e9;
            System.out.printf(
                    "%d updates in %.3f s, %d failed, %d pictures compared, %d differ%n",
                    player.updates(),
                    seconds,
                    player.failed(),
                    player.checksums(),
                    player.differing());
            Recording recording = player.recording();
            if (recording.ending() != Recording.Ending.COMPLETE) {
                System.out.printf(
                        "The recording is %s at byte %d%n",
                        recording.ending(), recording.position());
            }
            boolean readable =
                    recording.ending() == Recording.Ending.COMPLETE
                            || recording.ending() == Recording.Ending.CUT;
            return readable && player.differing() == 0 ? 0 : DIFFERENT;
        }
    }

    private void play(RecordingPlayer player, long start)
            throws IOException, InterruptedException {
        while (player.step()) {
            if (!player.difference().isEmpty() && player.differing() <= MOST_DIFFERENCES_TOLD) {
                System.out.printf(
                        "update %d, %s: %s%n",
                        player.updates() - 1, player.lastUpdate().header(), player.difference());
            }
            if (realTime) {
                player.keepPace(start);
            }
        }
    }
}
