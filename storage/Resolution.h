// The scope within which a path is followed, and what the storage factories have answered in it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "core/BasicArray.h"
#include "core/BasicMap.h"
#include "storage/Directory.h"

namespace ZEMA {

// Keeps every question to the factories, a directory and the components below it, together with its answer.
//
// To answer for a/b/c an archive factory follows a/b itself, and so asks every factory for a/b, which makes them follow
// a. Afterwards the outer resolutions try the same shorter paths once more: every missing component would double the
// work. With the memo each question is put once, and each archive on the way is mounted once.
//
// One memo serves a whole resolution with all that nest in it, and goes with the outermost. Until then it keeps what it
// has seen alive, so that a mounted archive stays reachable and no address comes to mean another directory. Directories
// of the storage itself are never taken from the memo. For what is made meanwhile, be it a directory or an archive,
// ForgetRefusals is called whenever a path operation has created something.
//
// Threads: guarded by StorageMutex.
class ResolutionMemo {
public:
    // Puts into questions[n] the question for the first n + 1 components.
    void GetQuestions(Directory& base, const BasicArray<String>& components, BasicArray<std::size_t>& questions);

    // The answer to a question, given by `ask` the first time. A question that comes up while it is being asked is
    // refused, so a factory that asks back about its own question ends.
    template <class Ask>
    RefPointer<Directory> Answer(std::size_t question, Ask ask) {
        if (nodes_[question].state == State::Unknown) {
            nodes_[question].state = State::Asking;
            RefPointer<Directory> answer = ask();
            nodes_[question].state = answer ? State::Answered : State::Refused;
            nodes_[question].directory = std::move(answer);
        }
        return nodes_[question].directory;
    }

    bool IsRefused(std::size_t question) const { return nodes_[question].state == State::Refused; }

    void ForgetRefusals();
    std::uint64_t Creations() const { return creations_; }  // how often that was called

    // Lets go of the mounted archives and of all that was asked below other directories than `base`. A path that leads
    // into an archive again asks for it again; what was refused below `base` stays refused.
    void ForgetAnswers(Directory& base);

private:
    // What is known of the answer to a question.
    enum class State { Unknown, Asking, Refused, Answered };

    // A tree of components below each base, in one array. A base is nobody's child, and the first node is one: 0 ends a
    // list of children, which is seldom longer than one.
    struct Node {
        String component;
        RefPointer<Directory> directory;  // the base itself or the answer
        State state = State::Unknown;
        std::size_t firstChild = 0;
        std::size_t nextSibling = 0;
    };

    std::size_t AddNode();
    std::size_t ChildOf(std::size_t parent, const String& component);

    BasicArray<Node> nodes_;
    BasicMap<Directory*, std::size_t> bases_;
    std::uint64_t creations_ = 0;
};

// Stands while a path is being followed. Resolutions that begin meanwhile, in the storage factories that the first one
// asks, join it: they share one memo, which goes with the outermost.
//
// Threads: StorageMutex is held from before the first resolution begins until it has ended.
class Resolution {
public:
    Resolution();
    Resolution(const Resolution&) = delete;
    Resolution& operator=(const Resolution&) = delete;
    ~Resolution();

    ResolutionMemo& Memo() { return outermost_.memo_; }
    int Nesting() const { return outermost_.nesting_; }  // 1 for the outermost

    // Something came into being in the storage that a factory may answer for.
    static void NoteCreated();

private:
    Resolution& outermost_;
    ResolutionMemo memo_;  // used by the outermost alone
    int nesting_ = 0;      // so is this
};

}  // namespace ZEMA
