package nn.qv.demo;

import java.math.BigDecimal;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import java.util.Map;

/**
 * A chart with a mark for every run, drawn as SVG: circles for ICT, squares for LBE.
 *
 * @param title what is shown, for those who cannot see it
 */
record Chart(String title, Axis x, Axis y, List<Mark> marks) {
    /**
     * A run in the chart.
     *
     * @param name shown when the pointer is over the mark
     * @param link the run's place in the page
     * @param hue of its screen, in degrees
     */
    record Mark(String name, String link, int hue, boolean round, double x, double y) {}

    // Units of the view box. The labels need what is left of it.
    private static final int WIDTH = 480;
    private static final int HEIGHT = 350;
    private static final int LEFT = 56;
    private static final int RIGHT = WIDTH - 16;
    private static final int TOP = 40;
    private static final int BOTTOM = HEIGHT - 60;
    private static final double RADIUS = 4.5;

    private static final Template VERTICAL =
            new Template(
                    "<line class=\"grid\" x1=\"${at}\" x2=\"${at}\""
                            + " y1=\"${top}\" y2=\"${bottom}\"/>"
                            + "<text class=\"x tick\" x=\"${at}\" y=\"${label}\">${tick}</text>");
    private static final Template HORIZONTAL =
            new Template(
                    "<line class=\"grid\" x1=\"${left}\" x2=\"${right}\""
                            + " y1=\"${at}\" y2=\"${at}\"/>"
                            + "<text class=\"y tick\" x=\"${label}\" y=\"${at}\">${tick}</text>");
    private static final Template MARK =
            new Template(
                    "<a href=\"#${link}\" tabindex=\"-1\" style=\"--hue: ${hue}\">"
                            + "<title>${name}</title>${shape}</a>");
    private static final Template CIRCLE =
            new Template("<circle class=\"mark\" cx=\"${x}\" cy=\"${y}\" r=\"${radius}\"/>");
    private static final Template SQUARE =
            new Template(
                    "<rect class=\"mark\" x=\"${left}\" y=\"${top}\""
                            + " width=\"${width}\" height=\"${width}\"/>");

    Html draw(Template template) {
        return template.fill(
                Map.of(
                        "title", title,
                        "size", WIDTH + " " + HEIGHT,
                        "xLabel", x.label(),
                        "xLabelX", (LEFT + RIGHT) / 2,
                        "xLabelY", HEIGHT - 8,
                        "yLabel", y.label(),
                        "yLabelY", TOP - 18,
                        "ticks", Html.join(ticks()),
                        "marks", Html.join(marks.stream().map(this::draw).toList())));
    }

    private List<Html> ticks() {
        List<Html> drawn = new ArrayList<>();
        for (BigDecimal tick : x.ticks()) {
            drawn.add(
                    VERTICAL.fill(
                            Map.of(
                                    "at", number(xOf(tick.doubleValue())),
                                    "top", TOP,
                                    "bottom", BOTTOM,
                                    "label", BOTTOM + 24,
                                    "tick", tick.toPlainString())));
        }
        for (BigDecimal tick : y.ticks()) {
            drawn.add(
                    HORIZONTAL.fill(
                            Map.of(
                                    "at", number(yOf(tick.doubleValue())),
                                    "left", LEFT,
                                    "right", RIGHT,
                                    "label", LEFT - 8,
                                    "tick", tick.toPlainString())));
        }
        return drawn;
    }

    private Html draw(Mark mark) {
        return MARK.fill(
                Map.of(
                        "link", mark.link(),
                        "hue", mark.hue(),
                        "name", mark.name(),
                        "shape", shape(mark.round(), xOf(mark.x()), yOf(mark.y()))));
    }

    private static Html shape(boolean round, double x, double y) {
        if (round) {
            return CIRCLE.fill(Map.of("x", number(x), "y", number(y), "radius", RADIUS));
        }
        // As large an area as the circle's.
        double half = RADIUS * Math.sqrt(Math.PI) / 2;
        return SQUARE.fill(
                Map.of(
                        "left", number(x - half),
                        "top", number(y - half),
                        "width", number(2 * half)));
    }

    private double xOf(double value) {
        return LEFT + x.place(value) * (RIGHT - LEFT);
    }

    private double yOf(double value) {
        return BOTTOM - y.place(value) * (BOTTOM - TOP);
    }

    private static String number(double value) {
        return String.format(Locale.ROOT, "%.2f", value);
    }
}
