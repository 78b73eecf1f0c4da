package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.net.URISyntaxException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.security.CodeSource;
import java.util.List;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import nn.qv.rccore.impl.rfb.img.hive.NativeImageDecodingHelper;

/** One walk through the places where the shared object may be, until one of them serves. */
public final class NativeSearch {
    private static final String NAME = "imagedecoder";
    private static final String FILE_NAME = "lib" + NAME + ".so";
    private static final List<Path> JNI_FOLDERS =
            List.of(Path.of("/usr/lib/x86_64-linux-gnu/jni"), Path.of("/usr/lib/jni"));
    private static final Pattern IN_OTHER_LOADER =
            Pattern.compile("Native Library (.+) already loaded in another classloader");

    private final String path;
    private final Extraction extraction;
    private final int version;
    private final LoadFailures failures;

    /** The arguments are names of properties, and the version that getVersion must answer. */
    public NativeSearch(String pathProperty, String extractProperty, int version) {
        path = System.getProperty(pathProperty);
        extraction = new Extraction(extractProperty);
        failures = new LoadFailures(pathProperty, extractProperty);
        this.version = version;
    }

    /** Loads the shared object and returns where it was; throws UnsatisfiedLinkError. */
    public String load() {
        String origin = path != null ? loadFile(Path.of(path).toAbsolutePath()) : search();
        if (origin == null) {
            throw failures.toError();
        }
        return origin;
    }

    private String search() {
        String origin = loadByName();
        Path besideJar = besideJar();
        if (origin == null && besideJar != null) {
            origin = loadFile(besideJar);
        }
        for (Path folder : JNI_FOLDERS) {
            origin = origin != null ? origin : loadFile(folder.resolve(FILE_NAME));
        }
        return origin != null ? origin : loadBundled();
    }

    private String loadByName() {
        return load("System.loadLibrary(\"" + NAME + "\")", () -> System.loadLibrary(NAME));
    }

    private String loadFile(Path file) {
        if (!Files.isRegularFile(file)) {
            failures.add(file.toString(), "there is no such file", null);
            return null;
        }
        return load(file.toString(), () -> System.load(file.toString()));
    }

    /** Returns the place, or null, with the failure kept, if what is there does not serve. */
    private String load(String place, Runnable loading) {
        try {
            loading.run();
        } catch (UnsatisfiedLinkError e) {
            return copyForThisLoader(place, e);
        } catch (IllegalCallerException e) {
            throw failures.illegalCaller(e);
        }
        return checked(place);
    }

    private String loadBundled() {
        try {
            byte[] object = extraction.bundled();
            for (Path base : extraction.bases()) {
                String origin = loadExtracted(object, base);
                if (origin != null) {
                    return origin;
                }
            }
        } catch (IOException e) {
            failures.add("in the jar", e.getMessage(), e);
        }
        return null;
    }

    private String loadExtracted(byte[] object, Path base) {
        try {
            return loadFile(extraction.extract(object, base));
        } catch (IOException e) {
            failures.add("extraction to " + base, LoadFailures.describe(e), e);
            return null;
        }
    }

    /**
     * A JVM lets one class loader have a file. A second one can have a copy, with state of its own.
     */
    private String copyForThisLoader(String place, UnsatisfiedLinkError error) {
        Matcher matcher = IN_OTHER_LOADER.matcher(String.valueOf(error.getMessage()));
        if (!matcher.find()) {
            failures.add(place, null, error);
            return null;
        }
        Path original = Path.of(matcher.group(1));
        for (Path base : extraction.bases()) {
            try (Extraction.PrivateCopy copy = extraction.copy(original, base)) {
                System.load(copy.path().toString());
            } catch (UnsatisfiedLinkError | IOException e) {
                failures.add("copy of " + original + " in " + base, null, e);
                continue;
            }
            return checked(original + " (a copy for this class loader)");
        }
        return null;
    }

    /** The place, if what was loaded from there is this library in the right version. */
    private String checked(String place) {
        int actual;
        try {
            actual = NativeImageDecodingHelper.getVersion();
        } catch (UnsatisfiedLinkError e) {
            failures.add(place, "it is not the image decoder: getVersion is missing", e);
            return null;
        }
        if (actual != version) {
            throw failures.wrongVersion(place, actual, version);
        }
        return place;
    }

    private static Path besideJar() {
        try {
            CodeSource source = NativeSearch.class.getProtectionDomain().getCodeSource();
            Path jar = source == null ? null : Path.of(source.getLocation().toURI());
            return jar == null ? null : jar.resolveSibling(FILE_NAME);
        } catch (URISyntaxException | IllegalArgumentException | SecurityException e) {
            return null; // The classes come from elsewhere than a file.
        }
    }
}
