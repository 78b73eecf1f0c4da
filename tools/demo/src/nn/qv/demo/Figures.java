package nn.qv.demo;

import java.util.Locale;

/** The figures of a run as the page shows them. */
record Figures(DemoResult result) {
    String rate() {
        return decimals(3, result.bitsPerPixel());
    }

    String psnr() {
        return Double.isInfinite(result.psnr()) ? "∞" : decimals(2, result.psnr());
    }

    String speed() {
        return decimals(0, result.megapixelsPerSecond());
    }

    String kilobytes() {
        return decimals(1, result.bytes() / 1000.0);
    }

    /** Such as 4:2:0. */
    String chroma() {
        return String.join(":", result.run().chromaName().split(""));
    }

    int version() {
        return result.run().options().protocolVersion().ordinal();
    }

    /** How the run was encoded and decoded. */
    String way() {
        int threads = result.run().options().threads();
        return String.format(
                Locale.ROOT,
                "%s %s, quality %d, version %d%s",
                result.run().options().codec(),
                chroma(),
                result.run().quality(),
                version(),
                threads > 0 ? ", " + threads + " threads" : "");
    }

    String summary() {
        return rate() + " bits/pixel, " + psnr() + " dB, " + speed() + " Mpixel/s";
    }

    private static String decimals(int count, double value) {
        return String.format(Locale.ROOT, "%." + count + "f", value);
    }
}
