package nn.qv.demo;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.LocalDateTime;
import java.time.format.DateTimeFormatter;
import java.util.Locale;
import nn.qv.imagedecoder.ScreenDecoder;

/** What the figures were measured with. */
record Machine(String decoder, String processor, String system, String java, String time) {
    static Machine here() {
        String version = ScreenDecoder.class.getPackage().getImplementationVersion();
        return new Machine(
                version == null ? "unknown" : version,
                processorName() + ", " + Runtime.getRuntime().availableProcessors() + " cores",
                System.getProperty("os.name") + " " + System.getProperty("os.arch"),
                System.getProperty("java.vm.name") + " " + System.getProperty("java.vm.version"),
                LocalDateTime.now()
                        .format(DateTimeFormatter.ofPattern("yyyy-MM-dd HH:mm", Locale.ROOT)));
    }

    private static String processorName() {
        String label = "model name";
        try {
            return Files.readAllLines(Path.of("/proc/cpuinfo")).stream()
                    .filter(line -> line.startsWith(label))
                    .map(line -> line.substring(line.indexOf(':') + 1).strip())
                    .findFirst()
                    .orElse("unknown processor");
        } catch (IOException e) {
            return "unknown processor";
        }
    }
}
