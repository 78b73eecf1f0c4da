package nn.qv.demo;

/**
 * What a run gave.
 *
 * @param width of the screen in pixels
 * @param height of the screen in pixels
 * @param frames how many were encoded
 * @param bytes of all encoded frames
 * @param psnr of the last frame against its source, in dB; infinite if they are equal
 * @param largestDifference of any sample of the last frame, 0 to 255
 * @param bestSeconds time that the fastest pass over all frames took
 */
record DemoResult(
        RunFiles files,
        int width,
        int height,
        int frames,
        long bytes,
        double psnr,
        int largestDifference,
        double bestSeconds) {
    DemoRun run() {
        return files.run();
    }

    /** Of all frames, unchanged blocks among them. */
    private double pixels() {
        return (double) frames * width * height;
    }

    double bitsPerPixel() {
        return 8 * bytes / pixels();
    }

    double megapixelsPerSecond() {
        return pixels() / bestSeconds / 1e6;
    }
}
