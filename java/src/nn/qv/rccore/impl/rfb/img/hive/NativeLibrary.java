package nn.qv.rccore.impl.rfb.img.hive;

import java.nio.file.Path;

/** Loads the shared object that the native methods of this package live in. */
public final class NativeLibrary {
    /**
     * System property with the path of the shared object, for a viewer that brings its own. Without
     * it the JVM looks for {@code libimagedecoder.so} where it looks for every native library.
     */
    public static final String PATH_PROPERTY = "nn.qv.imagedecoder.path";

    /** The version of the native interface that these classes are written for. */
    public static final int INTERFACE_VERSION = 9;

    private static boolean loaded;

    private NativeLibrary() {}

    /**
     * Loads the library unless an earlier call did, and makes sure that it speaks this interface.
     * Call it before the first native method; any thread may.
     *
     * @throws UnsatisfiedLinkError if the library is not found, cannot be mapped, or speaks another
     *     version of the interface
     */
    public static synchronized void load() {
        if (loaded) {
            return;
        }
        String path = System.getProperty(PATH_PROPERTY);
        if (path != null) {
            System.load(Path.of(path).toAbsolutePath().toString());
        } else {
            System.loadLibrary("imagedecoder");
        }
        int version = NativeImageDecodingHelper.getVersion();
        if (version != INTERFACE_VERSION) {
            throw new UnsatisfiedLinkError(
                    "The native image decoder has interface version "
                            + version
                            + ", but version "
                            + INTERFACE_VERSION
                            + " is needed");
        }
        loaded = true;
    }
}
