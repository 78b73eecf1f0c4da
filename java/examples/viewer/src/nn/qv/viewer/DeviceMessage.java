package nn.qv.viewer;

import nn.qv.imagedecoder.UpdateHeader;

/** What a device sends after it has stated its options. */
sealed interface DeviceMessage {
    /** The screen has another size from here on; it is black. */
    record ScreenSize(int width, int height) implements DeviceMessage {}

    /** An update. Its bytes follow in the stream. */
    record Update(UpdateHeader header, int length) implements DeviceMessage {}
}
