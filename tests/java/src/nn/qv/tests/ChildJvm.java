package nn.qv.tests;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.HashMap;
import java.util.List;
import java.util.Map;

/** A JVM of its own for what can be done or seen only once in a JVM. */
final class ChildJvm {
    /** How a child ended: its exit status, and what it wrote to both of its outputs. */
    record Result(int status, String output) {
        Result expectStatus(int expected) {
            TestRun.expect(
                    status == expected, "status " + status + ", not " + expected + ": " + output);
            return this;
        }

        Result expectSays(String text) {
            TestRun.expect(output.contains(text), "\"" + text + "\" is not in: " + output);
            return this;
        }

        Result expectSilentOn(String text) {
            TestRun.expect(!output.contains(text), "\"" + text + "\" is in: " + output);
            return this;
        }
    }

    private final List<String> wrapper = new ArrayList<>();
    private final List<String> options = new ArrayList<>();
    private final Map<String, String> environment = new HashMap<>();
    private final Path home;

    /** Of the given Java home. */
    ChildJvm(Path home) {
        this.home = home;
    }

    ChildJvm option(String... added) {
        options.addAll(Arrays.asList(added));
        return this;
    }

    ChildJvm property(String name, Object value) {
        return option("-D" + name + "=" + value);
    }

    ChildJvm environment(String name, Object value) {
        environment.put(name, value.toString());
        return this;
    }

    /** The command that starts the JVM's command, which is appended to it. */
    ChildJvm within(String... command) {
        wrapper.addAll(Arrays.asList(command));
        return this;
    }

    Result run(String... mainAndArguments) throws IOException, InterruptedException {
        List<String> command = new ArrayList<>(wrapper);
        command.add(home.resolve("bin/java").toString());
        command.add("-Xshare:auto");
        command.add("-XX:TieredStopAtLevel=1");
        command.addAll(options);
        command.addAll(Arrays.asList(mainAndArguments));
        ProcessBuilder builder = new ProcessBuilder(command).redirectErrorStream(true);
        builder.environment().putAll(environment);
        Process process = builder.start();
        process.getOutputStream().close();
        byte[] output = process.getInputStream().readAllBytes();
        return new Result(process.waitFor(), new String(output, StandardCharsets.UTF_8));
    }
}
