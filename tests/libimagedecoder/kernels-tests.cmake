# Tests of the kernels and their choice, for the library's test program.
set(KERNEL_TEST_SOURCES
    CpuArchTest.cpp
    DetectionTest.cpp
    KernelFactoryTest.cpp
    KernelLevelsTest.cpp
    MaskRunsTest.cpp
    VirtualSlotsTest.cpp
    InverseTransform/InverseIctTest.cpp
    YCbCr4xxToArgb32/ModelConversionTest.cpp
    YCbCr4xxToArgb32/QuantizedConversionTest.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32NativeTest.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Test.cpp)
set(KERNEL_TEST_LIBS vostrel_imagedecoder model_decoder)
