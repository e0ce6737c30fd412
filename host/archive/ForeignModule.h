// The seam to the module that unpacks foreign methods: loaded only when a member needs it, since the library that it
// brings along is many libraries, which would be loaded at each start of the program.
#pragma once

#include <cstddef>

namespace ZEMA {

// What the module shows, as functions of C. An archive is given to it piece by piece and must hold one member.
struct ForeignModule {
    // Gives the next bytes of the archive: their count, 0 at its end, -1 where they cannot be read. They stay good
    // until the next call.
    using Source = std::ptrdiff_t (*)(void* context, const void** bytes);

    // A reader of the member, or null. The source must outlive it.
    void* (*open)(Source source, void* context);
    // As Source, with the bytes in `buffer`.
    std::ptrdiff_t (*read)(void* reader, void* buffer, std::size_t size);
    void (*close)(void* reader);
};

// Where the module is installed (BesideProgram), and the name of the ForeignModule that it exports.
inline constexpr const char* kForeignModuleFile = "lib/wqf/wqfforeign.so";
inline constexpr const char* kForeignModuleSymbol = "wqfForeignModule";

}  // namespace ZEMA
