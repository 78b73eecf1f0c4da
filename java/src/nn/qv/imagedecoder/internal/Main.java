package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.nio.file.AccessDeniedException;
import java.nio.file.NoSuchFileException;
import nn.qv.imagedecoder.NativeLoader;

/** What {@code java -jar imagedecoder.jar} does. */
public final class Main {
    private static final String USAGE =
            """
            usage: java -jar imagedecoder.jar replay [--realtime] [--threads N] FILE
                   java -jar imagedecoder.jar version

            replay   decodes a recording again and compares every result and picture with the
                     recorded one, as fast as possible, or at the recorded times with --realtime.
                     N is 1 to 64; without it there are as many threads as the recording needs.
            version  prints the version, and from where the native library was loaded

            exit status
              0  done; every result and picture is as recorded
              1  wrong usage
              2  the file cannot be read or is no recording, or the native library cannot be loaded
              3  an update cannot be decoded, and could when it was recorded
              4  a result or a picture differs, or there is none to compare
              5  the recording is cut or damaged; what comes before that was played
            """;

    private Main() {}

    /** Ends the JVM with an exit status as in the usage text. */
    public static void main(String[] arguments) throws InterruptedException {
        ExitStatus status = run(arguments);
        if (System.out.checkError()) {
            complain("The standard output cannot be written");
            status = ExitStatus.UNUSABLE;
        }
        System.exit(status.code());
    }

    private static ExitStatus run(String[] arguments) throws InterruptedException {
        try {
            return runCommand(arguments);
        } catch (IllegalArgumentException e) {
            complain(e.getMessage());
            System.err.println("Try: java -jar imagedecoder.jar --help");
            return ExitStatus.WRONG_USAGE;
        } catch (IOException | UnsatisfiedLinkError e) {
            complain(describe(e));
            return ExitStatus.UNUSABLE;
        }
    }

    private static ExitStatus runCommand(String[] arguments)
            throws IOException, InterruptedException {
        if (arguments.length == 0) {
            System.err.print(USAGE);
            return ExitStatus.WRONG_USAGE;
        }
        switch (arguments[0]) {
            case "replay" -> {
                return new ReplayCommand(arguments).run();
            }
            case "version", "--version" -> printVersion();
            case "help", "--help", "-h" -> System.out.print(USAGE);
            default -> throw new IllegalArgumentException("Unknown command: " + arguments[0]);
        }
        return ExitStatus.DONE;
    }

    private static void printVersion() {
        String version = Main.class.getPackage().getImplementationVersion();
        System.out.println("imagedecoder " + (version == null ? "of unknown version" : version));
        NativeLoader.load();
        System.out.println(
                "interface version "
                        + NativeLoader.INTERFACE_VERSION
                        + ", "
                        + NativeLoader.origin());
    }

    private static String describe(Throwable failure) {
        if (failure instanceof NoSuchFileException) {
            return failure.getMessage() + ": no such file";
        }
        if (failure instanceof AccessDeniedException) {
            return failure.getMessage() + ": permission denied";
        }
        return failure.getMessage();
    }

    private static void complain(String message) {
        System.err.println("imagedecoder: " + message);
    }
}
