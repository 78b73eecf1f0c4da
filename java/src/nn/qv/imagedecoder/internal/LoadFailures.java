package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** What went wrong at each place where the shared object might have been, and what to do. */
final class LoadFailures {
    /** A text of the dynamic linker or the JVM, what it means, and what helps. */
    private record Reason(String sign, String meaning, String remedy) {}

    private final List<Throwable> causes = new ArrayList<>();
    private final List<String> lines = new ArrayList<>();
    private final List<Reason> reasons;
    private final String pathProperty;

    LoadFailures(String pathProperty, String extractProperty) {
        this.pathProperty = pathProperty;
        reasons =
                List.of(
                        new Reason(
                                "failed to map segment",
                                "its folder is on a file system that is mounted noexec",
                                "set -D" + extractProperty + "=FOLDER to a folder that is not"),
                        new Reason(
                                "wrong ELF class",
                                "it is for another architecture than this JVM",
                                "use the build for Linux on x86-64 with a 64-bit JVM"),
                        new Reason(
                                "(Possible cause: can't load",
                                "it is for another architecture than this JVM",
                                "use the build for Linux on x86-64 with a 64-bit JVM"),
                        new Reason(
                                "version `GLIBC_",
                                "it needs a newer C library (glibc) than this system has",
                                "use the shared object of a release, which needs glibc 2.17"),
                        new Reason(
                                "invalid ELF header",
                                "it is damaged, or no shared object",
                                "install it again"),
                        new Reason(
                                "file too short",
                                "it is damaged: its end is missing",
                                "install it again"),
                        new Reason(
                                "cannot open shared object file",
                                "it, or a shared object that it needs, cannot be opened",
                                "see which one the message names"),
                        new Reason(
                                "no imagedecoder in",
                                "it is in none of the folders where this JVM looks",
                                "set -D" + pathProperty + "=FILE to its path"));
    }

    /**
     * Keeps a failure.
     *
     * @param place where it happened
     * @param meaning what it means; null to find that in the cause's message
     * @param cause null if there is nothing to tell but the meaning
     */
    void add(String place, String meaning, Throwable cause) {
        String text = cause == null ? "" : withoutPlace(place, describe(cause));
        String line = place + ": " + (meaning != null ? meaning : explain(text));
        lines.add(line);
        UnsatisfiedLinkError kept = new UnsatisfiedLinkError(line);
        kept.initCause(cause);
        causes.add(kept);
    }

    /** The error to throw when every place has failed. */
    UnsatisfiedLinkError toError() {
        StringBuilder message =
                new StringBuilder(
                        "The native image decoder cannot be loaded. Tried in this order:");
        for (int i = 0; i < lines.size(); i++) {
            message.append(System.lineSeparator());
            message.append("  ").append(i + 1).append(". ").append(lines.get(i));
        }
        return error(message.toString());
    }

    /** The error for a JVM that forbids native code; no other place would do. */
    UnsatisfiedLinkError illegalCaller(IllegalCallerException cause) {
        Module module = LoadFailures.class.getModule();
        String flag =
                "--enable-native-access=" + (module.isNamed() ? module.getName() : "ALL-UNNAMED");
        add("any place", "this JVM denies native code to " + module, cause);
        return error(
                "The native image decoder cannot be loaded: this JVM denies native code to "
                        + module
                        + ". Start it with "
                        + flag);
    }

    /**
     * The error for a shared object of another release. It stays loaded, and would answer for any
     * other one, so there is no use in going on.
     */
    UnsatisfiedLinkError wrongVersion(String place, int actual, int needed) {
        String problem =
                "it has version "
                        + actual
                        + " of the native interface, but this jar needs version "
                        + needed;
        add(place, problem, null);
        return error(
                "The native image decoder at "
                        + place
                        + " does not fit: "
                        + problem
                        + ". Remove it, or set -D"
                        + pathProperty
                        + "=FILE to the right one");
    }

    /** The exception's message, and its type where that alone tells what happened. */
    static String describe(Throwable e) {
        return e instanceof IOException ? e.toString() : String.valueOf(e.getMessage());
    }

    /** The JVM and the dynamic linker each begin with the path. */
    private static String withoutPlace(String place, String text) {
        String rest = text;
        while (rest.startsWith(place + ": ")) {
            rest = rest.substring(place.length() + 2);
        }
        return rest;
    }

    private String explain(String text) {
        for (Reason reason : reasons) {
            if (text.contains(reason.sign)) {
                return reason.meaning + "; " + reason.remedy + " (" + text + ")";
            }
        }
        return text;
    }

    private UnsatisfiedLinkError error(String message) {
        UnsatisfiedLinkError error = new UnsatisfiedLinkError(message);
        causes.forEach(error::addSuppressed);
        return error;
    }
}
