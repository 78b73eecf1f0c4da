package nn.qv.demo;

import java.math.BigDecimal;
import java.util.ArrayList;
import java.util.Collection;
import java.util.List;

/**
 * An axis of a chart, from its first tick to its last.
 *
 * @param ticks at least two, ascending
 */
record Axis(String label, List<BigDecimal> ticks, boolean logarithmic) {
    /** With ticks at multiples of {@code step}. Infinite values are left out. */
    static Axis linear(String label, Collection<Double> values, int step) {
        double[] range = range(values);
        BigDecimal width = BigDecimal.valueOf(step);
        long first = (long) Math.floor(range[0] / step);
        long last = Math.max(first + 1, (long) Math.ceil(range[1] / step));
        List<BigDecimal> ticks = new ArrayList<>();
        for (long i = first; i <= last; i++) {
            ticks.add(BigDecimal.valueOf(i).multiply(width));
        }
        return new Axis(label, ticks, false);
    }

    /** With ticks at 1, 2 and 5 times powers of ten. The values are positive. */
    static Axis logarithmic(String label, Collection<Double> values) {
        double[] range = range(values);
        List<BigDecimal> ticks = new ArrayList<>();
        int power = (int) Math.floor(Math.log10(range[0]));
        for (int i = 0; ticks.size() < 2 || last(ticks).doubleValue() < range[1]; i++) {
            BigDecimal next = tick(i, power);
            if (next.doubleValue() <= range[0]) {
                ticks.clear();
            }
            ticks.add(next);
        }
        return new Axis(label, ticks, true);
    }

    /** Where a value lies, from 0 for the first tick to 1 for the last; not outside. */
    double place(double value) {
        double first = scaled(ticks.get(0).doubleValue());
        double range = scaled(last(ticks).doubleValue()) - first;
        return Math.max(0, Math.min(1, (scaled(value) - first) / range));
    }

    private double scaled(double value) {
        return logarithmic ? Math.log10(value) : value;
    }

    /** 1, 2, 5, 10, 20, 50 ... times a power of ten. */
    private static BigDecimal tick(int i, int power) {
        int[] factors = {1, 2, 5};
        return BigDecimal.valueOf(factors[i % 3]).scaleByPowerOfTen(power + i / 3);
    }

    private static double[] range(Collection<Double> values) {
        return new double[] {
            values.stream().filter(Double::isFinite).min(Double::compare).orElse(1.0),
            values.stream().filter(Double::isFinite).max(Double::compare).orElse(1.0)
        };
    }

    private static BigDecimal last(List<BigDecimal> ticks) {
        return ticks.get(ticks.size() - 1);
    }
}
