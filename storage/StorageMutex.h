// The one lock of the storage tree.
#pragma once

#include <pthread.h>

namespace ZEMA {

// Process-wide and recursive. Guards names, parent links, the maps of open children, the last release of every element,
// every path operation and every File wrapper; back ends and the platform are called with it held. It stands before the
// object registry can hold anything and is still there when the registry is emptied at exit.
pthread_mutex_t& StorageMutex();

// Holds StorageMutex for a scope.
class StorageLock {
public:
    StorageLock() { pthread_mutex_lock(&StorageMutex()); }
    ~StorageLock() { pthread_mutex_unlock(&StorageMutex()); }
    StorageLock(const StorageLock&) = delete;
    StorageLock& operator=(const StorageLock&) = delete;
};

}  // namespace ZEMA
