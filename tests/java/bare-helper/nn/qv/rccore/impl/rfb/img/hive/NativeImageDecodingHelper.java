package nn.qv.rccore.impl.rfb.img.hive;

import java.io.IOException;

/**
 * Stands in for the class of the same name where a test needs a helper that lacks the methods which
 * the library calls. It has the native methods alone.
 */
public abstract class NativeImageDecodingHelper {
    public static native int getVersion();

    public final native long createLogger();

    public final native long createStreambuffer(long logger) throws IOException;

    public static native long createRCRenderer(long logger) throws IOException;

    public static native void deleteLogger(long logger);

    public static native void deleteStreambuffer(long streambuffer);

    public static native void deleteRCRenderer(long renderer);
}
