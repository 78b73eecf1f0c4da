package nn.qv.demo;

import nn.qv.example.DecoderOptions;

/**
 * One row of the table: a sequence of screens, encoded and decoded in one way.
 *
 * @param screen first part of the file names of the sequence's pictures
 * @param options how the decoder is created
 * @param quality the encoding's quality value
 */
record DemoRun(String screen, DecoderOptions options, int quality) {
    private static final String[] CHROMA_NAMES = {"420", "422", "444"};

    String chromaName() {
        return CHROMA_NAMES[options.chromaSubsampling()];
    }

    String codecName() {
        return options.codec().name().toLowerCase();
    }

    /** Names the files of this run. */
    String fileStem() {
        return String.format(
                "%s-%s-%s-v%d-t%d-q%d",
                screen,
                codecName(),
                chromaName(),
                options.protocolVersion(),
                options.threads(),
                quality);
    }
}
