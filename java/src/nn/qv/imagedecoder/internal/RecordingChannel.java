package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.nio.channels.FileChannel;
import java.nio.channels.FileLock;
import java.nio.channels.OverlappingFileLockException;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.FileAttribute;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.Set;

/** Opens the files of recordings for writing, each for one writer at a time. */
final class RecordingChannel {
    /** What was on the screen is not for the other users of the machine. */
    private static final FileAttribute<?> OWNER_ONLY =
            PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString("rw-------"));

    private static final Set<StandardOpenOption> NEW_FILE =
            Set.of(StandardOpenOption.CREATE_NEW, StandardOpenOption.WRITE);

    private interface Preparation {
        void run() throws IOException;
    }

    private RecordingChannel() {}

    /** Of a file that must not exist yet. */
    static FileChannel create(Path file) throws IOException {
        FileChannel channel = FileChannel.open(file, NEW_FILE, OWNER_ONLY);
        return prepared(channel, () -> lock(channel, file));
    }

    /** Of a file of so many bytes, cut off at an end and positioned there. */
    static FileChannel resume(Path file, long size, long end) throws IOException {
        FileChannel channel = FileChannel.open(file, StandardOpenOption.WRITE);
        return prepared(
                channel,
                () -> {
                    lock(channel, file);
                    if (channel.size() != size) {
                        throw inUse(file);
                    }
                    channel.truncate(end).position(end);
                });
    }

    private static FileChannel prepared(FileChannel channel, Preparation preparation)
            throws IOException {
        try {
            preparation.run();
            return channel;
        } catch (IOException | RuntimeException e) {
            channel.close();
            throw e;
        }
    }

    /** Until the channel is closed. */
    private static void lock(FileChannel channel, Path file) throws IOException {
        FileLock lock;
        try {
            lock = channel.tryLock();
        } catch (OverlappingFileLockException e) {
            throw inUse(file);
        } catch (IOException e) {
            return; // Not every file system has locks.
        }
        if (lock == null) {
            throw inUse(file);
        }
    }

    private static IOException inUse(Path file) {
        return new IOException(file + " is being written by another recording");
    }
}
