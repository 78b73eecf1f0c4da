package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.Files;
import java.nio.file.InvalidPathException;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.nio.file.attribute.PosixFilePermission;
import java.nio.file.attribute.PosixFilePermissions;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.ArrayList;
import java.util.HexFormat;
import java.util.List;
import java.util.Set;

/**
 * Brings the shared object out of the jar into a folder that belongs to the user alone. Whoever
 * else could write there could run code in this process.
 */
final class Extraction {
    /** A file for one class loader; once it is loaded, its name is not needed any more. */
    record PrivateCopy(Path path) implements AutoCloseable {
        @Override
        public void close() throws IOException {
            Files.deleteIfExists(path);
        }
    }

    private static final String RESOURCE = "/nn/qv/imagedecoder/native/linux-x86_64/";
    private static final String FILE_NAME = "libimagedecoder.so";
    private static final Set<PosixFilePermission> OWNER_ONLY =
            PosixFilePermissions.fromString("rwx------");
    private static final int HASH_DIGITS = 16;

    private final String property;

    Extraction(String property) {
        this.property = property;
    }

    /** The folders to try in this order: of the property, for caches, for temporary files. */
    List<Path> bases() {
        List<Path> bases = new ArrayList<>();
        add(bases, System.getProperty(property), "imagedecoder");
        String cache = System.getenv("XDG_CACHE_HOME");
        if (cache == null || !cache.startsWith("/")) {
            cache = System.getProperty("user.home") + "/.cache";
        }
        add(bases, cache, "imagedecoder");
        String user = System.getProperty("user.name", "");
        add(bases, System.getProperty("java.io.tmpdir"), "imagedecoder-" + user);
        return bases;
    }

    private static void add(List<Path> bases, String folder, String name) {
        try {
            if (folder != null && !folder.isEmpty()) {
                bases.add(Path.of(folder).toAbsolutePath().resolve(name));
            }
        } catch (InvalidPathException e) {
            // A user name or setting that cannot be part of a path: there is no such folder.
        }
    }

    /** The shared object in the jar; it must be for this platform and whole. */
    byte[] bundled() throws IOException {
        String platform = System.getProperty("os.name") + " on " + System.getProperty("os.arch");
        if (!platform.equals("Linux on amd64")) {
            throw new IOException("the jar has it for Linux on amd64 only, not for " + platform);
        }
        byte[] object = resource(FILE_NAME);
        String hash = new String(resource(FILE_NAME + ".sha256"), StandardCharsets.US_ASCII);
        if (!hash.startsWith(sha256(object))) {
            throw new IOException("the jar is damaged: the hash of the shared object is wrong");
        }
        return object;
    }

    /** The object as a file of the folder: what an earlier run left there, if it is the same. */
    Path extract(byte[] object, Path folder) throws IOException {
        String hash = sha256(object);
        makePrivate(folder);
        Path file = folder.resolve("libimagedecoder-" + hash.substring(0, HASH_DIGITS) + ".so");
        if (!holds(file, hash)) {
            Path temporary = temporaryFile(folder);
            try {
                Files.write(temporary, object);
                Files.move(temporary, file, StandardCopyOption.ATOMIC_MOVE);
            } finally {
                Files.deleteIfExists(temporary);
            }
        }
        return file;
    }

    /** A copy of a shared object that another class loader has. */
    PrivateCopy copy(Path original, Path folder) throws IOException {
        makePrivate(folder);
        Path temporary = temporaryFile(folder);
        Files.copy(original, temporary, StandardCopyOption.REPLACE_EXISTING);
        return new PrivateCopy(temporary);
    }

    private static Path temporaryFile(Path folder) throws IOException {
        return Files.createTempFile(
                folder,
                "libimagedecoder-",
                ".tmp.so",
                PosixFilePermissions.asFileAttribute(OWNER_ONLY));
    }

    private static boolean holds(Path file, String hash) throws IOException {
        return Files.isRegularFile(file, LinkOption.NOFOLLOW_LINKS)
                && sha256(Files.readAllBytes(file)).equals(hash);
    }

    private static void makePrivate(Path folder) throws IOException {
        Files.createDirectories(folder.getParent());
        try {
            Files.createDirectory(folder, PosixFilePermissions.asFileAttribute(OWNER_ONLY));
        } catch (FileAlreadyExistsException e) {
            expectOwn(folder);
            Files.setPosixFilePermissions(folder, OWNER_ONLY);
        }
    }

    private static void expectOwn(Path folder) throws IOException {
        if (!Files.isDirectory(folder, LinkOption.NOFOLLOW_LINKS)) {
            throw new IOException(folder + " is no folder");
        }
        Object self = Files.getOwner(Path.of("/proc/self"));
        Object owner = Files.getOwner(folder, LinkOption.NOFOLLOW_LINKS);
        if (!owner.equals(self)) {
            throw new IOException(folder + " belongs to " + owner + ", not to " + self);
        }
    }

    private static byte[] resource(String name) throws IOException {
        try (InputStream in = Extraction.class.getResourceAsStream(RESOURCE + name)) {
            if (in == null) {
                throw new IOException("there is no shared object in the jar");
            }
            return in.readAllBytes();
        }
    }

    private static String sha256(byte[] bytes) {
        try {
            byte[] digest = MessageDigest.getInstance("SHA-256").digest(bytes);
            return HexFormat.of().formatHex(digest);
        } catch (NoSuchAlgorithmException e) {
            throw new AssertionError("Every JVM has SHA-256", e);
        }
    }
}
