package nn.qv.demo;

import java.util.List;
import java.util.stream.Collectors;

/**
 * A piece of a page.
 *
 * @param markup inserted into the page as it is
 */
record Html(String markup) {
    static final Html NOTHING = new Html("");

    /** A text, in which no character is markup. */
    static Html text(String text) {
        return new Html(
                text.replace("&", "&amp;")
                        .replace("<", "&lt;")
                        .replace(">", "&gt;")
                        .replace("\"", "&quot;"));
    }

    static Html join(List<Html> pieces) {
        return new Html(pieces.stream().map(Html::markup).collect(Collectors.joining("\n")));
    }
}
