/**
 * Decodes the framebuffer updates of a remote console.
 *
 * <p>A {@link nn.qv.imagedecoder.ScreenDecoder} draws the updates of one connection and encoding
 * into a {@link nn.qv.imagedecoder.Framebuffer} and tells what changed.
 *
 * <pre>{@code
 * Framebuffer screen = Framebuffer.argb(1024, 768);
 * try (ScreenDecoder decoder = ScreenDecoder.open(DecoderOptions.builder(Codec.ICT).build())) {
 *     UpdateHeader header = new UpdateHeader(0, 0, 1024, 768, 12);
 *     ChangedRectangle changed = decoder.decode(header, bytes, screen);
 * }
 * }</pre>
 */
package nn.qv.imagedecoder;
