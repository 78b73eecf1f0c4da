package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.stream.Stream;
import nn.qv.example.Codec;
import nn.qv.example.UpdateFeed;
import nn.qv.rccore.impl.rfb.img.hive.NativeLibrary;

/**
 * Every case file of one codec through the native methods. Arguments: the folder of the files, the
 * codec, the size of the transfer array in bytes (0 for each file's own pieces).
 */
final class CaseFilesTest {
    private CaseFilesTest() {}

    public static void main(String[] arguments) throws IOException {
        NativeLibrary.load();
        Codec codec = Codec.valueOf(arguments[1]);
        int transferSize = Integer.parseInt(arguments[2]);
        TestRun run = new TestRun();
        for (Path file : caseFiles(Path.of(arguments[0]))) {
            CaseFile life = CaseFile.load(file);
            if (life.options().codec() == codec) {
                run.test(
                        life.name(),
                        () -> CaseLife.expectRight(life, new UpdateFeed(), transferSize));
            }
        }
        run.finish();
    }

    private static List<Path> caseFiles(Path folder) throws IOException {
        try (Stream<Path> files = Files.list(folder)) {
            return files.filter(file -> file.toString().endsWith(".case")).sorted().toList();
        }
    }
}
