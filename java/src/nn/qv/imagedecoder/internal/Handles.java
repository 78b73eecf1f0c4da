package nn.qv.imagedecoder.internal;

/** The native objects of one decoder's life, 0 for what does not exist. */
public record Handles(long logger, long streambuffer, long renderer, long decoder) {}
