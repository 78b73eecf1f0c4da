package nn.qv.tests;

import java.io.IOException;
import java.lang.management.ManagementFactory;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Stream;
import javax.management.JMException;
import javax.management.ObjectName;

/** What this process holds at the moment, as the kernel and the JVM know it. */
final class ProcessState {
    /** Names of threads are cut to 15 characters. */
    private static final String WORKER_NAME = "ThreadPool Thre";

    private static final Pattern RESIDENT = Pattern.compile("VmRSS:\\s+(\\d+) kB");
    private static final Pattern GLOBAL_REFERENCES = Pattern.compile("JNI global refs: (\\d+)");

    private ProcessState() {}

    /** Resident memory in KiB. */
    static long residentKib() throws IOException {
        return number(RESIDENT, Files.readString(Path.of("/proc/self/status")));
    }

    static int threads() throws IOException {
        return tasks().size();
    }

    /** The threads of all the decoders' pools. */
    static int workers() throws IOException {
        int workers = 0;
        for (Path task : tasks()) {
            if (isWorker(task)) {
                workers++;
            }
        }
        return workers;
    }

    /** Global JNI references of the whole JVM, from the text of its thread dump. */
    static long globalReferences() throws JMException {
        Object dump =
                ManagementFactory.getPlatformMBeanServer()
                        .invoke(
                                new ObjectName("com.sun.management:type=DiagnosticCommand"),
                                "threadPrint",
                                new Object[] {new String[0]},
                                new String[] {String[].class.getName()});
        return number(GLOBAL_REFERENCES, dump.toString());
    }

    private static List<Path> tasks() throws IOException {
        try (Stream<Path> tasks = Files.list(Path.of("/proc/self/task"))) {
            return tasks.toList();
        }
    }

    /** A thread that ends meanwhile takes its files with it. */
    private static boolean isWorker(Path task) {
        try {
            return Files.readString(task.resolve("comm")).startsWith(WORKER_NAME);
        } catch (IOException e) {
            return false;
        }
    }

    private static long number(Pattern pattern, String text) {
        Matcher matcher = pattern.matcher(text);
        TestRun.expect(matcher.find(), "no match of " + pattern);
        return Long.parseLong(matcher.group(1));
    }
}
