package nn.qv.tests;

import java.nio.file.Path;
import java.util.HashMap;
import java.util.Map;

/**
 * What a soak is asked for, as arguments of the form {@code name=value}.
 *
 * @param cases folder of the case files
 * @param streams folder of the encoder's recordings
 * @param record file that always names the life being lived, for the case of a crash
 * @param seed decides everything
 * @param seconds how long to go on, if updates is 0
 * @param updates how many hostile updates to decode
 * @param life the only life to live, -1 for all
 * @param hangSeconds how long an update may take
 * @param toleranceKib how much the resident memory may rise in the second half
 */
record SoakOptions(
        Path cases,
        Path streams,
        Path record,
        long seed,
        long seconds,
        long updates,
        long life,
        int hangSeconds,
        long toleranceKib) {

    static SoakOptions parse(String[] arguments) {
        Map<String, String> values = new HashMap<>();
        for (String argument : arguments) {
            String[] parts = argument.split("=", 2);
            TestRun.expect(parts.length == 2, "not of the form name=value: " + argument);
            values.put(parts[0], parts[1]);
        }
        SoakOptions options =
                new SoakOptions(
                        Path.of(values.remove("cases")),
                        Path.of(values.remove("streams")),
                        Path.of(values.remove("record")),
                        number(values, "seed", 1),
                        number(values, "seconds", 10),
                        number(values, "updates", 0),
                        number(values, "life", -1),
                        (int) number(values, "hang-seconds", 20),
                        number(values, "tolerance-kib", 16 * 1024));
        TestRun.expect(values.isEmpty(), "unknown arguments: " + values.keySet());
        return options;
    }

    private static long number(Map<String, String> values, String name, long otherwise) {
        String value = values.remove(name);
        return value == null ? otherwise : Long.parseLong(value);
    }
}
