// What a process still says when it cannot go on.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace ZEMA {

// For a process that reads one document by itself, without a worker: when it crashes, or the document takes too long,
// this writes what stands ready for that and ends the process. The time starts again when a stopped job goes on.
//
// There is one at a time. Under the sanitizers crashes are theirs to report.
class LastWords {
public:
    // What goes to standard output and to standard error for a document that failed for this reason.
    struct Words {
        std::string output;
        std::string message;
    };
    using WordsFor = std::function<Words(const std::string& reason)>;

    LastWords(std::chrono::milliseconds timeout, const WordsFor& wordsFor, int exitStatus);
    LastWords(const LastWords&) = delete;
    LastWords& operator=(const LastWords&) = delete;
    ~LastWords();  // takes everything back
};

// Why there is no answer for a document, in the same words wherever it is read.
std::string TooLateText(std::chrono::milliseconds timeout);
std::string CrashText(int signal);

}  // namespace ZEMA
