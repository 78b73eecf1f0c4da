package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Path;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;

/**
 * Records some updates that change nothing, and prints what becomes of each and of the recording.
 * Arguments: the file, the number of updates.
 */
final class RecordingFailureProbe {
    private RecordingFailureProbe() {}

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        int updates = Integer.parseInt(arguments[1]);
        DecoderOptions options =
                DecoderOptions.builder(Codec.LBE)
                        .record(Path.of(arguments[0]))
                        .onRecordingFailure(
                                e -> System.out.println("told: " + e.getCause().getMessage()))
                        .build();
        ScreenDecoder decoder = ScreenDecoder.open(options);
        Framebuffer screen = Framebuffer.argb(16, 16);
        for (int i = 0; i < updates; i++) {
            decoder.decode(RecordedConnection.CORNER, RecordedConnection.UNCHANGED, screen);
            System.out.println("decoded " + i);
        }
        decoder.close();
        System.out.println("failure: " + decoder.recordingFailure().isPresent());
    }
}
