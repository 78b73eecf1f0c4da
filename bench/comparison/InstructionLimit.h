#pragma once

namespace Vostrel::bench {

class DecodingScene;

/// The instruction sets that a decoder may find on its processor.
enum class Instructions { All, Sse2, None };

/// What to add to the name of a work; nothing for all instructions.
const char* Suffix(Instructions instructions);

/// While it lives, decoders and renderers that are created see a processor with those instruction
/// sets only, and choose their kernels accordingly; they keep them afterwards. One at a time.
class InstructionLimit {
public:
    explicit InstructionLimit(Instructions instructions);
    ~InstructionLimit();
    InstructionLimit(const InstructionLimit&) = delete;
    InstructionLimit& operator=(const InstructionLimit&) = delete;
};

/// Throws std::logic_error when a scene's renderer chose kernels beyond a limit.
void CheckKernels(const DecodingScene& scene, Instructions instructions);

} // namespace Vostrel::bench
