// Changes either an archive or what is to be done to it, so that most of what the fuzzer tries is still both.
#include <cstring>

#include "fuzz/Fuzzing.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    constexpr std::size_t kMostChoices = 255;
    const ZEMA::fuzzing::DocumentAndChoices input(ZEMA::fuzzing::TextOf(data, size));
    std::size_t documentSize = input.document.size();
    std::uint8_t choices[kMostChoices] = {};
    std::size_t count = documentSize < size ? size - documentSize - 1 : 0;
    std::memcpy(choices, data + documentSize, count);
    if (maxSize <= kMostChoices + 1 || documentSize > maxSize - kMostChoices - 1) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    if (seed % 4 == 0) {
        documentSize = LLVMFuzzerMutate(data, documentSize, maxSize - kMostChoices - 1);
    } else {
        count = LLVMFuzzerMutate(choices, count, kMostChoices);
    }
    if (count == 0) return documentSize;
    std::memcpy(data + documentSize, choices, count);
    data[documentSize + count] = static_cast<std::uint8_t>(count);
    return documentSize + count + 1;
}
