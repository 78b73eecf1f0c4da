package nn.qv.tests;

import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Path;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.NativeLoader;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateHeader;

/**
 * Loads the library, decodes something, and tells how it went: for a JVM of its own. With jars as
 * arguments it does so in two class loaders.
 */
public final class LoadingProbe {
    private LoadingProbe() {}

    public static void main(String[] arguments) throws Exception {
        if (arguments.length == 0) {
            load();
            return;
        }
        URL[] urls = new URL[arguments.length];
        for (int i = 0; i < urls.length; i++) {
            urls[i] = Path.of(arguments[i]).toUri().toURL();
        }
        for (int i = 0; i < 2; i++) {
            // Not closed: the second one must find the file in use.
            ClassLoader loader = new URLClassLoader(urls, ClassLoader.getPlatformClassLoader());
            loader.loadClass(LoadingProbe.class.getName()).getMethod("load").invoke(null);
        }
    }

    /** Prints where the library was, or why not. */
    public static void load() throws Exception {
        try {
            NativeLoader.load();
        } catch (UnsatisfiedLinkError e) {
            System.out.println("message: " + e.getMessage());
            for (Throwable attempt : e.getSuppressed()) {
                System.out.println("attempt: " + attempt.getMessage());
            }
            return;
        }
        DecoderOptions options = DecoderOptions.builder(Codec.ICT).build();
        try (ScreenDecoder decoder = ScreenDecoder.open(options)) {
            ChangedRectangle changed =
                    decoder.decode(
                            new UpdateHeader(0, 0, 16, 16, 7),
                            new byte[] {-1, -1},
                            Framebuffer.argb(16, 16));
            TestRun.expect(changed.isEmpty(), "changed " + changed);
        }
        System.out.println("serves: " + NativeLoader.origin());
    }
}
