package nn.qv.imagedecoder;

import nn.qv.imagedecoder.internal.NativeSearch;

/**
 * Loads the shared object that the native methods live in, once for each class loader. {@link
 * ScreenDecoder#open} calls it; a viewer may do so earlier, to find out at its start.
 *
 * <p>The places, in this order:
 *
 * <ol>
 *   <li>the path in the property {@value #PATH_PROPERTY}; if it is set, no other place is tried
 *   <li>where {@link System#loadLibrary} looks
 *   <li>the folder of the jar, then {@code /usr/lib/x86_64-linux-gnu/jni} and {@code /usr/lib/jni}
 *   <li>the shared object in the jar, extracted to the first usable of the folder in the property
 *       {@value #EXTRACT_PROPERTY}, the user's cache folder and the folder for temporary files. It
 *       is extracted once for all JVMs, and used again only if its hash is right.
 * </ol>
 *
 * <pre>{@code
 * try {
 *     NativeLoader.load();
 * } catch (UnsatisfiedLinkError e) {
 *     System.err.println(e.getMessage()); // every place, what was wrong there, and what to do
 *     System.exit(1);
 * }
 * }</pre>
 */
public final class NativeLoader {
    /** System property with the path of the shared object, for a viewer that brings its own. */
    public static final String PATH_PROPERTY = "nn.qv.imagedecoder.path";

    /** System property with the folder to extract to. */
    public static final String EXTRACT_PROPERTY = "nn.qv.imagedecoder.extract";

    /** The version of the native interface that these classes are written for. */
    public static final int INTERFACE_VERSION = 9;

    private static String origin;

    private NativeLoader() {}

    /**
     * Loads the shared object unless an earlier call did, and makes sure that it speaks this
     * version of the interface. Any thread may call it.
     *
     * @throws UnsatisfiedLinkError if it is not to be had; what went wrong in each place is among
     *     the suppressed exceptions, and the message sums it up
     */
    public static synchronized void load() {
        if (origin == null) {
            origin =
                    new NativeSearch(PATH_PROPERTY, EXTRACT_PROPERTY, INTERFACE_VERSION).load();
        }
    }

    /**
     * Where the shared object came from, for a log line or a bug report.
     *
     * @return its path, or how it was found; empty before {@link #load}
     */
    public static synchronized String origin() {
        return origin == null ? "" : origin;
    }
}
