package nn.qv.imagedecoder;

import java.util.Locale;

/** What is wrong with an update before its bytes are looked at. */
final class UpdateChecks {
    private static final int MACROBLOCK = 16;

    private UpdateChecks() {}

    /** What the viewer can get wrong about a framebuffer, as opposed to what a device sends. */
    static void checkFramebuffer(DecoderOptions options, Framebuffer framebuffer) {
        if (framebuffer.chromaSubsampling().isEmpty()) {
            return;
        }
        if (!options.codec().drawsPlanes()) {
            throw new IllegalArgumentException(
                    options.codec()
                            + " updates cannot be drawn into planes: use Framebuffer.argb");
        }
        ChromaSubsampling planes = framebuffer.chromaSubsampling().get();
        if (planes != options.chromaSubsampling()) {
            throw new IllegalArgumentException(
                    "The planes are for "
                            + planes
                            + ", but the decoder for "
                            + options.chromaSubsampling());
        }
    }

    /** Why a rectangle does not belong to a framebuffer, as a text for people; empty if it does. */
    static String rectangleProblem(Codec codec, UpdateHeader header, Framebuffer framebuffer) {
        String problem = verbOf(header, framebuffer);
        return problem.isEmpty()
                ? ""
                : String.format(
                        Locale.ROOT,
                        "The rectangle of %s update %s %s the framebuffer of %dx%d",
                        codec, header, problem, framebuffer.width(), framebuffer.height());
    }

    private static String verbOf(UpdateHeader header, Framebuffer framebuffer) {
        if (header.x() >= framebuffer.width() || header.y() >= framebuffer.height()) {
            return "begins outside";
        }
        if (header.width() > wholeMacroblocks(framebuffer.width())
                || header.height() > wholeMacroblocks(framebuffer.height())) {
            return "is larger than";
        }
        boolean atCorner = header.x() == 0 && header.y() == 0;
        if (framebuffer.chromaSubsampling().isPresent() && !atCorner) {
            return "does not begin at (0, 0), as is needed for planes, in";
        }
        return "";
    }

    private static int wholeMacroblocks(int pixels) {
        return (pixels + MACROBLOCK - 1) / MACROBLOCK * MACROBLOCK;
    }
}
