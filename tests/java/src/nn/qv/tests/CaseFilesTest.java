package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Path;
import nn.qv.imagedecoder.NativeLoader;
import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * Every case file of one codec through the native methods. Arguments: the folder of the files, the
 * codec, the size of the transfer array in bytes (0 for each file's own pieces).
 */
final class CaseFilesTest {
    private CaseFilesTest() {}

    public static void main(String[] arguments) throws IOException {
        NativeLoader.load();
        NativeCodec codec = NativeCodec.valueOf(arguments[1]);
        int transferSize = Integer.parseInt(arguments[2]);
        TestRun run = new TestRun();
        for (CaseFile life : CaseFile.loadAll(Path.of(arguments[0]))) {
            if (life.options().codec() == codec) {
                run.test(
                        life.name(),
                        () -> CaseLife.expectRight(life, new MemoryFeed(), transferSize));
            }
        }
        run.finish();
    }
}
