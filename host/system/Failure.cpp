#include "host/system/Failure.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace ZEMA {

namespace {

// The system begins its texts with a capital letter, but they stand at the end of a line.
std::string InLowerCase(std::string text) {
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z') text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

}  // namespace

Failure SystemFailure(int error) {
    // Shorter than the system's text, which goes on "or directory" although nobody asked for one.
    if (error == ENOENT) return {FailureKind::Missing, "no such file", error};
    return {FailureKind::System, InLowerCase(std::strerror(error)), error};
}

Failure Refusal(std::string text) {
    return {FailureKind::Refused, std::move(text)};
}

}  // namespace ZEMA
