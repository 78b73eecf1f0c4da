package nn.qv.demo;

import java.io.DataInputStream;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;

/** The part of the page with the pictures: a section for every screen, in it all of its runs. */
record DemoScreens(List<DemoResult> results, List<String> screens) {
    Html sections() throws IOException {
        Template section = Template.resource("screen.html");
        List<Html> sections = new ArrayList<>();
        for (String screen : screens) {
            sections.add(section.fill(Map.of("screen", screen, "runs", runsOf(screen))));
        }
        return Html.join(sections);
    }

    /** The first one's pictures are in view; those of the others can be opened. */
    private Html runsOf(String screen) throws IOException {
        Template template = Template.resource("run.html");
        List<Html> runs = new ArrayList<>();
        for (DemoResult result : results) {
            if (result.run().screen().equals(screen)) {
                Map<String, Object> values = valuesOf(result);
                values.put("open", runs.isEmpty() ? "open" : "");
                runs.add(template.fill(values));
            }
        }
        return Html.join(runs);
    }

    private static Map<String, Object> valuesOf(DemoResult result) throws IOException {
        RunFiles files = result.files();
        Figures figures = new Figures(result);
        Map<String, Object> values = new HashMap<>();
        values.put("id", result.run().fileStem());
        values.put("screen", result.run().screen());
        values.put("way", figures.way());
        values.put("summary", figures.summary());
        values.put("width", result.width());
        values.put("height", result.height());
        values.put("frames", result.frames());
        values.put("kilobytes", figures.kilobytes());
        values.put("rate", figures.rate());
        values.put("psnr", figures.psnr());
        values.put("largest", result.largestDifference());
        values.put("speed", figures.speed());
        values.put("factor", RunFiles.DIFFERENCE_FACTOR);
        values.put("source", files.source().getFileName());
        values.put("decoded", files.decoded().getFileName());
        values.put("difference", files.difference().getFileName());
        values.put("heatmap", files.heatmap().getFileName());
        values.put("recording", files.recording().getFileName());
        putSize(values, files.heatmap());
        return values;
    }

    /** The heatmap's own: the browser can keep its place free before it is loaded. */
    private static void putSize(Map<String, Object> values, Path heatmap) throws IOException {
        try (DataInputStream png = new DataInputStream(Files.newInputStream(heatmap))) {
            png.skipNBytes(16); // The signature, the length and the type of the header.
            values.put("heatmapWidth", png.readInt());
            values.put("heatmapHeight", png.readInt());
        }
    }
}
