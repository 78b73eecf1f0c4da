package nn.qv.demo;

import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.util.Map;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * A piece of a page with places for values.
 *
 * @param text markup, in which <code>${name}</code> is the place of the value of that name
 */
record Template(String text) {
    private static final Pattern PLACE = Pattern.compile("\\$\\{(\\w+)\\}");

    /** A file of the page, which lies in the jar beside the classes. */
    static Template resource(String name) throws IOException {
        try (InputStream stream = Template.class.getResourceAsStream("page/" + name)) {
            if (stream == null) {
                throw new IOException("The jar has no page/" + name);
            }
            return new Template(new String(stream.readAllBytes(), StandardCharsets.UTF_8));
        }
    }

    /**
     * Puts the values in. {@link Html} is inserted as it is; the text of anything else is escaped.
     */
    Html fill(Map<String, ?> values) {
        Matcher places = PLACE.matcher(text);
        return new Html(
                places.replaceAll(
                        place -> Matcher.quoteReplacement(markupOf(values, place.group(1)))));
    }

    private static String markupOf(Map<String, ?> values, String name) {
        Object value = values.get(name);
        if (value == null) {
            throw new IllegalArgumentException("There is no value for ${" + name + "}");
        }
        return (value instanceof Html html ? html : Html.text(value.toString())).markup();
    }
}
