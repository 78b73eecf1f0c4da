package nn.qv.imagedecoder.internal;

import jdk.jfr.Category;
import jdk.jfr.DataAmount;
import jdk.jfr.Description;
import jdk.jfr.Event;
import jdk.jfr.Label;
import jdk.jfr.Name;
import jdk.jfr.StackTrace;
import jdk.jfr.Timespan;

/** The flight recorder's event of an update. */
@Name("nn.qv.imagedecoder.Update")
@Label("Framebuffer Update")
@Description("An update of a remote screen that was decoded, or failed")
@Category({"Image Decoder"})
@StackTrace(false)
final class UpdateEvent extends Event {
    @Label("Codec")
    String codec;

    @Label("Quality")
    int quality;

    @Label("Left")
    int x;

    @Label("Top")
    int y;

    @Label("Width")
    int width;

    @Label("Height")
    int height;

    @Label("Bytes")
    @DataAmount
    int bytes;

    @Label("Feed Time")
    @Description("Spent getting bytes from the source")
    @Timespan(Timespan.NANOSECONDS)
    long feedTime;

    @Label("Decode Time")
    @Description("Spent decoding and drawing")
    @Timespan(Timespan.NANOSECONDS)
    long decodeTime;

    @Label("Failure")
    String failure;

    void fill(UpdateTrace.Outcome outcome) {
        codec = outcome.codec();
        quality = outcome.update().quality();
        x = outcome.update().x();
        y = outcome.update().y();
        width = outcome.update().width();
        height = outcome.update().height();
        bytes = outcome.bytes();
        feedTime = outcome.feedNanos();
        decodeTime = outcome.decodeNanos();
        failure = outcome.failure();
    }
}
