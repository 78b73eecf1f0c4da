package nn.qv.imagedecoder;

import java.awt.image.BufferedImage;

/** What needs {@code java.desktop}, apart from {@link Framebuffer}, which works without. */
final class FramebufferImages {
    /** Pixels that are copied at a time, so that a large region needs no large array. */
    private static final int CHUNK_PIXELS = 1 << 16;

    private FramebufferImages() {}

    static BufferedImage imageOf(Framebuffer framebuffer) {
        int width = framebuffer.width();
        int height = framebuffer.height();
        framebuffer.pixels(); // Refuses planes before it allocates.
        BufferedImage image = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
        copy(framebuffer, image, new ChangedRectangle(0, 0, width, height));
        return image;
    }

    static void copy(Framebuffer framebuffer, BufferedImage image, ChangedRectangle region) {
        if (region.x() + region.width() > image.getWidth()
                || region.y() + region.height() > image.getHeight()) {
            throw new IllegalArgumentException(
                    "A picture of "
                            + image.getWidth()
                            + "x"
                            + image.getHeight()
                            + " pixels does not cover "
                            + region);
        }
        int rows = Math.max(1, CHUNK_PIXELS / Math.max(1, region.width()));
        for (int top = 0; top < region.height(); top += rows) {
            ChangedRectangle chunk =
                    new ChangedRectangle(
                            region.x(),
                            region.y() + top,
                            region.width(),
                            Math.min(rows, region.height() - top));
            copyChunk(framebuffer.copy(chunk), image, chunk);
        }
    }

    /** Not through the picture's array, whose use would end its hardware acceleration. */
    private static void copyChunk(int[] pixels, BufferedImage image, ChangedRectangle chunk) {
        boolean sameWords =
                switch (image.getType()) {
                    case BufferedImage.TYPE_INT_RGB,
                            BufferedImage.TYPE_INT_ARGB,
                            BufferedImage.TYPE_INT_ARGB_PRE ->
                            true;
                    default -> false;
                };
        if (sameWords) {
            image.getRaster()
                    .setDataElements(
                            chunk.x(), chunk.y(), chunk.width(), chunk.height(), pixels);
        } else {
            image.setRGB(
                    chunk.x(),
                    chunk.y(),
                    chunk.width(),
                    chunk.height(),
                    pixels,
                    0,
                    chunk.width());
        }
    }
}
