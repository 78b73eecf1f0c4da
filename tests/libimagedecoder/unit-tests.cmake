# Tests of everything but the kernels, for the library's test program.
set(UNIT_TEST_SOURCES
    BitStreamReaderTest.cpp
    CommonUpdateTest.cpp
    ContrastTest.cpp
    ILoggerTest.cpp
    IctCodingTablesTest.cpp
    IctTablesTest.cpp
    IctTileTest.cpp
    IctUpdateTest.cpp
    ImageDecoderExceptionTest.cpp
    ImageDecoderFrameTest.cpp
    LbePlaneTest.cpp
    LbeUpdateTest.cpp
    QuantizedColourTest.cpp
    RendererTest.cpp
    StreambufferTest.cpp
    UpdateJobsTest.cpp)
