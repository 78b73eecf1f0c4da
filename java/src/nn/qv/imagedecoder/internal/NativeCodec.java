package nn.qv.imagedecoder.internal;

import java.io.IOException;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderICTNative;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderLBENative;

/** The two encodings and the native methods that serve them; no argument is checked here. */
public enum NativeCodec {
    /** Served by {@link ImageDecoderICTNative}. */
    ICT {
        @Override
        public long createDecoder(
                long renderer, long streambuffer, long logger, int threads, int version, int chroma)
                throws IOException {
            return ImageDecoderICTNative.createImageDecoder(
                    renderer, streambuffer, logger, threads, version, chroma);
        }

        @Override
        public void deleteDecoder(long decoder) {
            ImageDecoderICTNative.deleteImageDecoder(decoder);
        }

        @Override
        public void setContrast(long renderer, int level) {
            ImageDecoderICTNative.setContrastEnhance(renderer, level);
        }

        @Override
        public void setPostprocessing(long renderer, boolean enabled) {
            ImageDecoderICTNative.setClientPostprocessingEnabled(renderer, enabled);
        }

        @Override
        public long perform(
                int length,
                byte[] transfer,
                NativeTarget target,
                NativeUpdate update,
                Handles handles) {
            return ImageDecoderICTNative.performICT(
                    length,
                    target.argb(),
                    target.yPlane(),
                    target.cbPlane(),
                    target.crPlane(),
                    transfer,
                    update.quality(),
                    target.width(),
                    target.height(),
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
    },

    /** Served by {@link ImageDecoderLBENative}, which knows no planes. */
    LBE {
        @Override
        public long createDecoder(
                long renderer, long streambuffer, long logger, int threads, int version, int chroma)
                throws IOException {
            return ImageDecoderLBENative.createImageDecoder(
                    renderer, streambuffer, logger, threads, version, chroma);
        }

        @Override
        public void deleteDecoder(long decoder) {
            ImageDecoderLBENative.deleteImageDecoder(decoder);
        }

        @Override
        public void setContrast(long renderer, int level) {
            ImageDecoderLBENative.setContrastEnhance(renderer, level);
        }

        @Override
        public void setPostprocessing(long renderer, boolean enabled) {
            ImageDecoderLBENative.setClientPostprocessingEnabled(renderer, enabled);
        }

        @Override
        public long perform(
                int length,
                byte[] transfer,
                NativeTarget target,
                NativeUpdate update,
                Handles handles) {
            return ImageDecoderLBENative.performLBE(
                    length,
                    target.argb(),
                    transfer,
                    update.quality(),
                    target.width(),
                    target.height(),
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
    };

    /** The codec's {@code createImageDecoder}. */
    public abstract long createDecoder(
            long renderer, long streambuffer, long logger, int threads, int version, int chroma)
            throws IOException;

    /** The codec's {@code deleteImageDecoder}. */
    public abstract void deleteDecoder(long decoder);

    /** The codec's {@code setContrastEnhance}. */
    public abstract void setContrast(long renderer, int level);

    /** The codec's {@code setClientPostprocessingEnabled}. */
    public abstract void setPostprocessing(long renderer, boolean enabled);

    /** The codec's {@code performICT} or {@code performLBE}, with any length of the array. */
    public abstract long perform(
            int length,
            byte[] transfer,
            NativeTarget target,
            NativeUpdate update,
            Handles handles);

    /** The codec's {@code performICT} or {@code performLBE}; the transfer array is used whole. */
    public final long perform(
            byte[] transfer, NativeTarget target, NativeUpdate update, Handles handles) {
        return perform(transfer.length, transfer, target, update, handles);
    }
}
