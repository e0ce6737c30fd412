// The module itself, a library of its own: libarchive behind three functions.
#include "host/archive/ForeignModule.h"

#include <archive.h>
#include <archive_entry.h>

#include <memory>
#include <new>

namespace {

using ZEMA::ForeignModule;

// Ends a reader of the library.
struct FreeReader {
    void operator()(archive* reader) const { archive_read_free(reader); }
};

// A reader of the library and where its archive comes from.
struct Reader {
    ForeignModule::Source source;
    void* context;
    std::unique_ptr<archive, FreeReader> file;
};

la_ssize_t Give(archive*, void* self, const void** bytes) {
    const auto* const reader = static_cast<const Reader*>(self);
    return static_cast<la_ssize_t>(reader->source(reader->context, bytes));
}

void* Open(ForeignModule::Source source, void* context) {
    std::unique_ptr<Reader> reader(new (std::nothrow) Reader{source, context, nullptr});
    if (!reader) return nullptr;
    reader->file.reset(archive_read_new());
    archive* const file = reader->file.get();
    archive_entry* entry = nullptr;
    const bool opened = file != nullptr && archive_read_support_format_zip_streamable(file) == ARCHIVE_OK &&
                        archive_read_open(file, reader.get(), nullptr, Give, nullptr) == ARCHIVE_OK &&
                        archive_read_next_header(file, &entry) == ARCHIVE_OK;
    return opened ? reader.release() : nullptr;
}

std::ptrdiff_t Read(void* reader, void* buffer, std::size_t size) {
    const la_ssize_t count = archive_read_data(static_cast<Reader*>(reader)->file.get(), buffer, size);
    return count < 0 ? -1 : static_cast<std::ptrdiff_t>(count);
}

void Close(void* reader) {
    delete static_cast<Reader*>(reader);
}

}  // namespace

extern "C" {
[[gnu::visibility("default")]] extern const ForeignModule wqfForeignModule;
const ForeignModule wqfForeignModule = {Open, Read, Close};
}
