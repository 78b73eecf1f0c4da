# The two kernel families and the choice of their variants. Only the AVX2 translation units may use
# wide instructions; SSE2 belongs to every x86-64 processor.
target_sources(vostrel_imagedecoder PRIVATE
    CpuArch.cpp
    InverseTransform/IInverseIct.cpp
    InverseTransform/InverseIctNative.cpp
    InverseTransform/InverseIctSse2.cpp
    InverseTransform/InverseIctAvx2.cpp
    InverseTransform/InverseIctFactory.cpp
    YCbCr4xxToArgb32/IYCbCr4xxToArgb32.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Sse2.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Avx2.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.cpp)

set_source_files_properties(
    InverseTransform/InverseIctAvx2.cpp
    YCbCr4xxToArgb32/YCbCr4xxToArgb32Avx2.cpp
    PROPERTIES COMPILE_OPTIONS -mavx2)
