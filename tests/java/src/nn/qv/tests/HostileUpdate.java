package nn.qv.tests;

/** An update on its way from good to bad, with the circumstances under which it is decoded. */
final class HostileUpdate {
    /** The framebuffer that a perform call is given. */
    enum Sink {
        /** That of the decoder's life, ARGB or planes. */
        REGULAR,
        /** All buffers null. */
        NONE
    }

    final SoakSeed seed;
    byte[] data;
    int payloadBytes;
    int quality;
    int x;
    int y;
    int width;
    int height;
    int framebufferWidth;
    int framebufferHeight;
    Sink sink = Sink.REGULAR;
    /** Size of the transfer array, which limits each read. */
    int transferBytes;
    /** Number of the read that gives misreadResult instead of bytes; -1 for none. */
    int misread = -1;
    int misreadResult;
    /** Text of the failure that must come, null if anything may. */
    String expectedError;

    HostileUpdate(SoakSeed seed) {
        this.seed = seed;
        Update update = seed.update();
        data = update.data().clone();
        payloadBytes = seed.payloadBytes();
        quality = update.quality();
        x = update.x();
        y = update.y();
        width = update.width();
        height = update.height();
        framebufferWidth = seed.width();
        framebufferHeight = seed.height();
        transferBytes = Math.max(1, data.length);
    }

    void replaceData(byte[] bytes) {
        data = bytes;
        payloadBytes = bytes.length;
    }

    Update update() {
        return new Update(quality, x, y, width, height, data);
    }
}
