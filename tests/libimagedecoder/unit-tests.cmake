# Tests of whole updates: a program of its own, since all of these have pools, and are wanted under
# ThreadSanitizer, too.
set(UPDATE_TEST_SOURCES
    CommonUpdateTest.cpp
    HazardsTest.cpp
    IctUpdateTest.cpp
    LbeUpdateTest.cpp
    UpdateJobsTest.cpp)
# Tests of the parts, without the kernels.
set(UNIT_TEST_SOURCES
    BitStreamReaderTest.cpp
    ContrastTest.cpp
    DecoderCreationTest.cpp
    ILoggerTest.cpp
    IctCodingTablesTest.cpp
    IctFastTablesTest.cpp
    IctTablesTest.cpp
    IctTileCursorTest.cpp
    IctTileTest.cpp
    ImageDecoderExceptionTest.cpp
    ImageDecoderFrameTest.cpp
    LargestFramebufferTest.cpp
    LbePlaneCursorTest.cpp
    LbePlaneTest.cpp
    LbeTokensTest.cpp
    QuantizedColourTest.cpp
    RendererArgbTest.cpp
    RendererPlanesTest.cpp
    RendererTest.cpp
    StreamWindowTest.cpp
    StreambufferTest.cpp)
