/**
 * Decodes the framebuffer updates of a remote console, in the encodings ICT and LBE, by a native
 * library that is part of the jar.
 *
 * <p>Package {@code nn.qv.imagedecoder} is the one to use. The other one holds the classes whose
 * native methods the library implements, for viewers that drive them directly.
 *
 * <p>{@code java.desktop} is needed for {@code BufferedImage} alone, {@code jdk.jfr} for flight
 * recordings alone; both may be missing when the program runs.
 */
module nn.qv.imagedecoder {
    requires static transitive java.desktop;
    requires static jdk.jfr;

    exports nn.qv.imagedecoder;
    exports nn.qv.rccore.impl.rfb.img.hive;
}
