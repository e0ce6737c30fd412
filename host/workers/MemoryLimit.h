// A limit on the memory of this process.
#pragma once

#include <cstdint>

namespace ZEMA {

// From now on this process gets no more than `bytes` above the address space that it has; requests beyond that fail as
// if there were no more memory. Neither set nor noticed under the sanitizers, which reserve address space by the
// terabyte.
void LimitMemory(std::uint64_t bytes);

// Whether what failed may have failed for want of memory: whether at any time half of the limit was in use. Texts and
// arrays grow by doubling or are copied whole, so the request that fails is about as large as all that there is, and
// not everybody whom it fails says so.
bool MemoryWasShort();

// Whether so much of the limit has been in use that the next document should find a fresh process.
bool MemoryIsWornOut();

}  // namespace ZEMA
