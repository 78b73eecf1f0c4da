package nn.qv.demo;

import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.function.ToDoubleFunction;
import nn.qv.imagedecoder.Codec;

/**
 * The charts of the page.
 *
 * @param screens names of the screens, each of which has a colour of its own
 */
record DemoCharts(List<DemoResult> results, List<String> screens) {
    private static final Template LEGEND =
            new Template("<li style=\"--hue: ${hue}\">${screen}</li>");

    Html legend() {
        return Html.join(
                screens.stream()
                        .map(screen -> LEGEND.fill(Map.of("hue", hue(screen), "screen", screen)))
                        .toList());
    }

    Html quality() throws IOException {
        Axis axis = Axis.linear("PSNR, dB", values(DemoResult::psnr), 10);
        return chart("Quality of every run over its rate", axis, DemoResult::psnr);
    }

    Html speed() throws IOException {
        Axis axis =
                Axis.logarithmic("Mpixel/s", values(DemoResult::megapixelsPerSecond));
        return chart("Speed of every run over its rate", axis, DemoResult::megapixelsPerSecond);
    }

    private Html chart(String title, Axis y, ToDoubleFunction<DemoResult> figure)
            throws IOException {
        Axis x = Axis.logarithmic("bits/pixel", values(DemoResult::bitsPerPixel));
        List<Chart.Mark> marks = new ArrayList<>();
        for (DemoResult result : results) {
            DemoRun run = result.run();
            Figures figures = new Figures(result);
            marks.add(
                    new Chart.Mark(
                            run.screen() + ", " + figures.way() + ": " + figures.summary(),
                            run.fileStem(),
                            hue(run.screen()),
                            run.options().codec() == Codec.ICT,
                            result.bitsPerPixel(),
                            figure.applyAsDouble(result)));
        }
        return new Chart(title, x, y, marks).draw(Template.resource("chart.html"));
    }

    private List<Double> values(ToDoubleFunction<DemoResult> figure) {
        return results.stream().mapToDouble(figure).boxed().toList();
    }

    private int hue(String screen) {
        return 360 * screens.indexOf(screen) / screens.size();
    }
}
