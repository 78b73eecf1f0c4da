package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.Path;
import java.time.LocalDateTime;
import java.time.format.DateTimeFormatter;
import java.util.Locale;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/** Names of files with a number and perhaps the time, by a pattern. */
final class RecordingName {
    /** Creates a file that must not exist yet. */
    interface Creation<T> {
        T create(Path file) throws IOException;
    }

    private static final Pattern FIELD = Pattern.compile("%(.?)", Pattern.DOTALL);
    private static final DateTimeFormatter TIME =
            DateTimeFormatter.ofPattern("yyyyMMdd-HHmmss", Locale.ROOT);

    private RecordingName() {}

    static void check(Path pattern) {
        boolean numbered = !nameOf(pattern, 1, "").equals(nameOf(pattern, 2, ""));
        if (!numbered) {
            throw new IllegalArgumentException(
                    "A file's name for each connection needs %n, which stands for a number: "
                            + pattern);
        }
    }

    /** Creates the file of the least number from 1 that does not exist. */
    static <T> T firstUnused(Path pattern, Creation<T> creation) throws IOException {
        String time = TIME.format(LocalDateTime.now());
        for (int number = 1; ; number++) {
            try {
                return creation.create(pattern.resolveSibling(nameOf(pattern, number, time)));
            } catch (FileAlreadyExistsException e) {
                // Try the next number.
            }
        }
    }

    private static String nameOf(Path pattern, int number, String time) {
        Path name = pattern.getFileName();
        if (name == null) {
            throw new IllegalArgumentException("No name of a file: " + pattern);
        }
        return FIELD.matcher(name.toString())
                .replaceAll(
                        match -> Matcher.quoteReplacement(valueOf(match.group(1), number, time)));
    }

    private static String valueOf(String field, int number, String time) {
        return switch (field) {
            case "n" -> Integer.toString(number);
            case "t" -> time;
            case "%" -> "%";
            default ->
                    throw new IllegalArgumentException(
                            "%" + field + " is none of %n (number), %t (time) and %% (percent)");
        };
    }
}
