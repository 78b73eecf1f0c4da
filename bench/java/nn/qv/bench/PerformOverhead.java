package nn.qv.bench;

import java.io.IOException;
import java.lang.management.ManagementFactory;
import java.lang.management.ThreadMXBean;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderICTNative;
import nn.qv.rccore.impl.rfb.img.hive.NativeImageDecodingHelper;

/**
 * Times performICT of one small update, over and over, the way a viewer calls it: each call pulls
 * the update's bytes through a transfer array of 64 KiB.
 *
 * <p>Arguments: the path of the shared object, a file with the bytes of a 4:2:0 update of protocol
 * version 0, the width and height of its rectangle, its quality, and how many rounds to measure.
 * Prints the median over the rounds of the nanoseconds of processor time that a call took.
 */
public final class PerformOverhead extends NativeImageDecodingHelper {
    private static final int TRANSFER_BYTES = 65536;
    private static final int CALLS_PER_ROUND = 2000;
    private static final int WARM_UP_ROUNDS = 20;

    private final byte[] update;
    private boolean offered;

    private PerformOverhead(byte[] update) {
        this.update = update;
    }

    public static void main(String[] arguments) throws IOException {
        System.load(arguments[0]);
        byte[] update = Files.readAllBytes(Path.of(arguments[1]));
        int width = Integer.parseInt(arguments[2]);
        int height = Integer.parseInt(arguments[3]);
        int quality = Integer.parseInt(arguments[4]);
        int rounds = Integer.parseInt(arguments[5]);
        System.out.println(new PerformOverhead(update).measure(width, height, quality, rounds));
    }

    private double measure(int width, int height, int quality, int rounds) throws IOException {
        long logger = createLogger();
        long stream = createStreambuffer(logger);
        long renderer = createRCRenderer(logger);
        long decoder = ImageDecoderICTNative.createImageDecoder(renderer, stream, logger, 0, 0, 0);
        ByteBuffer argb = ByteBuffer.allocateDirect(4 * width * height);
        byte[] transfer = new byte[TRANSFER_BYTES];
        ThreadMXBean clock = ManagementFactory.getThreadMXBean();

        double[] nanoseconds = new double[WARM_UP_ROUNDS + rounds];
        for (int round = 0; round < nanoseconds.length; round++) {
            long start = clock.getCurrentThreadCpuTime();
            for (int call = 0; call < CALLS_PER_ROUND; call++) {
                offered = true;
                long changed =
                        ImageDecoderICTNative.performICT(
                                transfer.length, argb, null, null, null, transfer, quality, width,
                                height, 0, 0, 0, 0, width, height, stream, renderer, decoder,
                                logger);
                if (changed == -1) {
                    throw new IOException("The update does not decode");
                }
            }
            long elapsed = clock.getCurrentThreadCpuTime() - start;
            nanoseconds[round] = (double) elapsed / CALLS_PER_ROUND;
        }

        ImageDecoderICTNative.deleteImageDecoder(decoder);
        deleteStreambuffer(stream);
        deleteRCRenderer(renderer);
        deleteLogger(logger);
        double[] measured = Arrays.copyOfRange(nanoseconds, WARM_UP_ROUNDS, nanoseconds.length);
        Arrays.sort(measured);
        return measured[measured.length / 2];
    }

    @Override
    protected void print(String line) {
        if (line.contains("Exception")) {
            System.err.println(line);
        }
    }

    @Override
    protected int read(byte[] transfer, int capacity) {
        if (!offered) {
            return 0;
        }
        offered = false;
        System.arraycopy(update, 0, transfer, 0, update.length);
        return update.length;
    }

    @Override
    protected void stall(byte[] transfer, int offset, int count) {
        // The next call starts over with the whole update.
    }
}
