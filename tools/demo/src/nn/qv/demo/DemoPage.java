package nn.qv.demo;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;

/** A page about all runs. It needs the pictures beside it and nothing else. */
record DemoPage(Html html) {
    private static final Template SCREEN_LINK =
            new Template("<li><a href=\"#${screen}\">${screen}</a></li>");

    /** The results' pictures have been written. */
    static DemoPage of(List<DemoResult> results) throws IOException {
        List<String> screens =
                results.stream().map(result -> result.run().screen()).distinct().toList();
        DemoCharts charts = new DemoCharts(results, screens);
        Machine machine = Machine.here();
        return new DemoPage(
                Template.resource("page.html")
                        .fill(
                                Map.ofEntries(
                                        Map.entry("style", asIs("page.css")),
                                        Map.entry("script", asIs("page.js")),
                                        Map.entry("runs", results.size()),
                                        Map.entry("screenCount", screens.size()),
                                        Map.entry("version", machine.decoder()),
                                        Map.entry("processor", machine.processor()),
                                        Map.entry("system", machine.system()),
                                        Map.entry("java", machine.java()),
                                        Map.entry("time", machine.time()),
                                        Map.entry("legend", charts.legend()),
                                        Map.entry("quality", charts.quality()),
                                        Map.entry("speed", charts.speed()),
                                        Map.entry("links", links(screens)),
                                        Map.entry(
                                                "screens",
                                                new DemoScreens(results, screens).sections()),
                                        Map.entry("rows", rows(results)))));
    }

    void write(Path file) throws IOException {
        Files.writeString(file, html.markup());
    }

    private static Html asIs(String resource) throws IOException {
        return new Html(Template.resource(resource).text());
    }

    private static Html links(List<String> screens) {
        return Html.join(
                screens.stream()
                        .map(screen -> SCREEN_LINK.fill(Map.of("screen", screen)))
                        .toList());
    }

    private static Html rows(List<DemoResult> results) throws IOException {
        Template row = Template.resource("row.html");
        List<Html> rows = new ArrayList<>();
        for (DemoResult result : results) {
            Figures figures = new Figures(result);
            DemoRun run = result.run();
            rows.add(
                    row.fill(
                            Map.ofEntries(
                                    Map.entry("id", run.fileStem()),
                                    Map.entry("screen", run.screen()),
                                    Map.entry("frames", result.frames()),
                                    Map.entry("codec", run.options().codec()),
                                    Map.entry("chroma", figures.chroma()),
                                    Map.entry("version", figures.version()),
                                    Map.entry("threads", run.options().threads()),
                                    Map.entry("quality", run.quality()),
                                    Map.entry("kilobytes", figures.kilobytes()),
                                    Map.entry("rate", figures.rate()),
                                    Map.entry("psnr", figures.psnr()),
                                    Map.entry("psnrValue", result.psnr()),
                                    Map.entry("speed", figures.speed()))));
        }
        return Html.join(rows);
    }
}
