package nn.qv.imagedecoder.internal;

import java.io.IOException;
import nn.qv.rccore.impl.rfb.img.hive.NativeImageDecodingHelper;

/**
 * The native objects of one decoder's life, made in the order in which they need each other and
 * deleted in the reverse one. As the action of a cleaner it must not be reachable from the helper,
 * which the native logger and stream keep alive, nor refer to it.
 */
public final class NativeObjects implements Runnable {
    private static final Handles NONE = new Handles(0, 0, 0, 0);

    private final NativeCodec codec;
    private Handles handles;

    private NativeObjects(NativeCodec codec, Handles handles) {
        this.codec = codec;
        this.handles = handles;
    }

    /**
     * Makes a logger, stream, renderer and decoder. The native library must be loaded.
     *
     * @param helper takes the log and supplies the bytes
     * @param threads worker threads, as the native interface takes them
     * @param version code of the protocol version
     * @param chroma code of the chroma subsampling
     * @throws IOException if the library refuses or runs out of memory; nothing is left behind
     */
    public static NativeObjects create(
            NativeImageDecodingHelper helper,
            NativeCodec codec,
            int threads,
            int version,
            int chroma)
            throws IOException {
        long logger = helper.createLogger();
        long stream = 0;
        long renderer = 0;
        long decoder = 0;
        NativeObjects objects = null;
        try {
            stream = helper.createStreambuffer(logger);
            renderer = NativeImageDecodingHelper.createRCRenderer(logger);
            decoder = codec.createDecoder(renderer, stream, logger, threads, version, chroma);
        } finally {
            objects = new NativeObjects(codec, new Handles(logger, stream, renderer, decoder));
            if (decoder == 0) {
                objects.run();
            }
        }
        return objects;
    }

    /** The handles, all 0 after the deletion. */
    public synchronized Handles handles() {
        return handles;
    }

    /** Deletes the objects; once they are gone it does nothing. */
    @Override
    public synchronized void run() {
        codec.deleteDecoder(handles.decoder());
        NativeImageDecodingHelper.deleteStreambuffer(handles.streambuffer());
        NativeImageDecodingHelper.deleteRCRenderer(handles.renderer());
        NativeImageDecodingHelper.deleteLogger(handles.logger());
        handles = NONE;
    }
}
