package nn.qv.imagedecoder;

/**
 * How many luma samples share a chroma sample.
 *
 * <pre>{@code
 * DecoderOptions.builder(Codec.ICT).chromaSubsampling(ChromaSubsampling.YCBCR_444);
 * }</pre>
 */
public enum ChromaSubsampling {
    /** One chroma sample for 2x2 pixels. */
    YCBCR_420(0, 2, 2),
    /** One chroma sample for two pixels side by side. */
    YCBCR_422(1, 2, 1),
    /** One chroma sample a pixel. */
    YCBCR_444(2, 1, 1);

    private final int code;
    private final int divX;
    private final int divY;

    ChromaSubsampling(int code, int divX, int divY) {
        this.code = code;
        this.divX = divX;
        this.divY = divY;
    }

    /** Its number in the native interface and in recordings. */
    int code() {
        return code;
    }

    /**
     * Width of a chroma plane.
     *
     * @param width width of the luma plane in samples
     * @return the width in samples, rounded down
     */
    public int chromaWidth(int width) {
        return width / divX;
    }

    /**
     * Height of a chroma plane.
     *
     * @param height height of the luma plane in rows
     * @return the height in rows, rounded down
     */
    public int chromaHeight(int height) {
        return height / divY;
    }
}
