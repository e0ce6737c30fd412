// What kept the host from doing something, and results that may be such a failure instead.
#pragma once

#include <cassert>
#include <optional>
#include <string>
#include <utility>

namespace ZEMA {

// What callers tell failures apart by. The texts are for users alone and nothing is decided by them.
enum class FailureKind {
    None,
    System,       // the system refused a call; the errno value stands beside it
    Missing,      // nothing is there
    WrongKind,    // something is there, but it is a folder, a pipe, ... where something else is wanted
    NoArchive,    // a file that is no archive
    Damaged,      // its bytes contradict its format
    Unsupported,  // its format is one that we do not read, or do not write
    Limit,        // the memory, or what one document may take, does not suffice
    Refused,      // it could be done and is not, for the user's sake
};

// Why something was not done; by default nothing failed.
//
// The text stands at the end of a message's line, "wqf: SUBJECT: TEXT", and so has a small first letter and no full
// stop. It may hold any bytes of file names; whoever prints it makes them safe.
struct [[nodiscard]] Failure {
    FailureKind kind = FailureKind::None;
    std::string text;
    int error = 0;  // for System and Missing the errno value, where the system was asked

    explicit operator bool() const { return kind != FailureKind::None; }

    // The same, with what it is about in front: "SUBJECT: TEXT".
    Failure In(const std::string& subject) const { return {kind, subject + ": " + text, error}; }
};

// The failure that an errno value stands for. The one place where the system's errors are put into words.
Failure SystemFailure(int error);

// A failure of the kind Refused.
Failure Refusal(std::string text);

// A value, or the failure that left none. Looking at the value of a failure is a mistake of ours.
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : value_(std::move(value)) {}
    Result(Failure failure) : failure_(std::move(failure)) { assert(failure_); }

    explicit operator bool() const { return value_.has_value(); }
    T& operator*() { return *value_; }
    const T& operator*() const { return *value_; }
    T* operator->() { return &*value_; }
    const T* operator->() const { return &*value_; }

    const Failure& Why() const { return failure_; }

private:
    std::optional<T> value_;
    Failure failure_;
};

}  // namespace ZEMA
