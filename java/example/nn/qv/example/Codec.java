package nn.qv.example;

import java.io.IOException;
import java.util.function.LongConsumer;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderICTNative;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderLBENative;

/** The two encodings and the native methods that serve them. */
public enum Codec {
    ICT(
            ImageDecoderICTNative::createImageDecoder,
            ImageDecoderICTNative::deleteImageDecoder,
            ImageDecoderICTNative::setContrastEnhance,
            ImageDecoderICTNative::setClientPostprocessingEnabled,
            Codec::performIct),
    LBE(
            ImageDecoderLBENative::createImageDecoder,
            ImageDecoderLBENative::deleteImageDecoder,
            ImageDecoderLBENative::setContrastEnhance,
            ImageDecoderLBENative::setClientPostprocessingEnabled,
            Codec::performLbe);

    /** The codec's {@code createImageDecoder}. */
    public interface Create {
        long create(
                long renderer,
                long streambuffer,
                long logger,
                int threads,
                int protocolVersion,
                int chromaSubsampling)
                throws IOException;
    }

    /** The codec's {@code setContrastEnhance}. */
    public interface SetContrastEnhance {
        void set(long renderer, int level);
    }

    /** The codec's {@code setClientPostprocessingEnabled}. */
    public interface SetClientPostprocessing {
        void set(long renderer, boolean enabled);
    }

    /** The codec's {@code performICT} or {@code performLBE}; the transfer array is used whole. */
    public interface Perform {
        long perform(byte[] transfer, Framebuffer framebuffer, Update update, Handles handles);
    }

    public final Create create;
    public final LongConsumer delete;
    public final SetContrastEnhance contrastEnhance;
    public final SetClientPostprocessing clientPostprocessing;
    public final Perform perform;

    Codec(
            Create create,
            LongConsumer delete,
            SetContrastEnhance contrastEnhance,
            SetClientPostprocessing clientPostprocessing,
            Perform perform) {
        this.create = create;
        this.delete = delete;
        this.contrastEnhance = contrastEnhance;
        this.clientPostprocessing = clientPostprocessing;
        this.perform = perform;
    }

    private static long performIct(
            byte[] transfer, Framebuffer framebuffer, Update update, Handles handles) {
        return ImageDecoderICTNative.performICT(
                transfer.length,
                framebuffer.argb(),
                framebuffer.yPlane(),
                framebuffer.cbPlane(),
                framebuffer.crPlane(),
                transfer,
                update.quality(),
                framebuffer.width(),
                framebuffer.height(),
                0,
                0,
                update.x(),
                update.y(),
                update.width(),
                update.height(),
                handles.streambuffer(),
                handles.renderer(),
                handles.decoder(),
                handles.logger());
    }

    private static long performLbe(
            byte[] transfer, Framebuffer framebuffer, Update update, Handles handles) {
        return ImageDecoderLBENative.performLBE(
                transfer.length,
                framebuffer.argb(),
                transfer,
                update.quality(),
                framebuffer.width(),
                framebuffer.height(),
                0,
                0,
                update.x(),
                update.y(),
                update.width(),
                update.height(),
                handles.streambuffer(),
                handles.renderer(),
                handles.decoder(),
                handles.logger());
    }
}
