package nn.qv.tests;

import java.util.ArrayList;
import java.util.List;
import java.util.logging.Handler;
import java.util.logging.Level;
import java.util.logging.LogRecord;
import java.util.logging.Logger;

/** Takes what the decoders log, instead of the console. */
final class LogCapture extends Handler {
    private static final Logger LOGGER = Logger.getLogger("nn.qv.imagedecoder");

    private final List<LogRecord> records = new ArrayList<>();
    private Throwable broken;

    /** From now on, for the rest of the program. */
    static LogCapture begin() {
        LogCapture capture = new LogCapture();
        LOGGER.setUseParentHandlers(false);
        LOGGER.setLevel(Level.ALL);
        LOGGER.addHandler(capture);
        return capture;
    }

    /** The lines of one level since the last call, oldest first. */
    List<String> take(Level level) {
        return messages(takeAll(), level);
    }

    /** All lines since the last call, oldest first. */
    synchronized List<LogRecord> takeAll() {
        List<LogRecord> taken = List.copyOf(records);
        records.clear();
        return taken;
    }

    /** The messages of one level. */
    static List<String> messages(List<LogRecord> lines, Level level) {
        return lines.stream()
                .filter(record -> record.getLevel().equals(level))
                .map(LogRecord::getMessage)
                .toList();
    }

    /** From now on throws that for every line, a RuntimeException or Error; null ends it. */
    synchronized void breakBy(Throwable thrown) {
        broken = thrown;
    }

    @Override
    public synchronized void publish(LogRecord record) {
        if (broken instanceof RuntimeException e) {
            throw e;
        }
        if (broken instanceof Error e) {
            throw e;
        }
        records.add(record);
    }

    @Override
    public void flush() {}

    @Override
    public void close() {}
}
