#include "storage/StorageMutex.h"

namespace ZEMA {
namespace {

// A mutex that its holder may take again.
class RecursiveMutex {
public:
    RecursiveMutex() {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&mutex_, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    ~RecursiveMutex() { pthread_mutex_destroy(&mutex_); }
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    pthread_mutex_t& Get() { return mutex_; }

private:
    pthread_mutex_t mutex_;
};

// Of namespace scope: the object registry is made on first use, after every static initialiser, and so goes before it.
RecursiveMutex storageMutex;

}  // namespace

pthread_mutex_t& StorageMutex() {
    return storageMutex.Get();
}

}  // namespace ZEMA
