// The scope within which a path is followed.
#pragma once

#include "storage/ResolutionMemo.h"

namespace ZEMA {

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
