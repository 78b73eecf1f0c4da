# The kernel families and the choice of their variants. Only the AVX2 translation units may use
# wide instructions, and only the SSSE3 ones byte shuffles; SSE2 belongs to every x86-64 processor.
target_sources(vostrel_imagedecoder PRIVATE
    CpuArch.cpp
    InverseTransform/IInverseIct.cpp
    InverseTransform/InverseIctNative.cpp
    InverseTransform/InverseIctSse2.cpp
    InverseTransform/InverseIctAvx2.cpp
    InverseTransform/InverseIctFactory.cpp
    KernelLevels.cpp
    LbePlaneKernel.cpp
    LbePlaneKernelFactory.cpp
    LbePlaneNative.cpp
    LbePlaneSsse3.cpp
    YCbCr4xxToArgb32/IYCbCr4xxToArgb32.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Sse2.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Avx2.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.cpp)

set_source_files_properties(
    InverseTransform/InverseIctAvx2.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Avx2.cpp
    PROPERTIES COMPILE_OPTIONS -mavx2)

set_source_files_properties(LbePlaneSsse3.cpp PROPERTIES COMPILE_OPTIONS -mssse3)

# Lets g++ divide without branches, several pixels at once; nobody looks at the floating-point flags.
set_source_files_properties(
    ImageDecoderRendererPostprocessing.cpp
    PROPERTIES COMPILE_OPTIONS -fno-trapping-math)
