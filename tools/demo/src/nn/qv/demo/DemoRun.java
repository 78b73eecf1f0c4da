package nn.qv.demo;

import java.util.Locale;
import nn.qv.imagedecoder.DecoderOptions;

/**
 * One row of the table: a sequence of screens, encoded and decoded in one way.
 *
 * @param screen first part of the file names of the sequence's pictures
 * @param options how the decoder is created
 * @param quality the encoding's quality value
 */
record DemoRun(String screen, DecoderOptions options, int quality) {
    /** Such as "420". */
    String chromaName() {
        return options.chromaSubsampling().name().replace("YCBCR_", "");
    }

    String codecName() {
        return options.codec().name().toLowerCase(Locale.ROOT);
    }

    /** Names the files of this run. */
    String fileStem() {
        return String.format(
                Locale.ROOT,
                "%s-%s-%s-v%d-t%d-q%d",
                screen,
                codecName(),
                chromaName(),
                options.protocolVersion().ordinal(),
                options.threads(),
                quality);
    }
}
