#include "loader/ModelLoader.h"

#include <utility>

#include "loader/ModelLoaderErrors.h"
#include "storage/File.h"

namespace ZEMA {

namespace {

// The parser under the document model counts bytes in an `int`.
constexpr std::uint64_t kTextSizeLimit = std::uint64_t{1} << 31;

// False leaves `content` empty. The file, and with it the text of an archive's member, is let go of on return.
bool ReadWhole(const Path& path, AString& content) {
    const RefPointer<File> file = path.OpenFile(&kReadStyle, false);
    if (!file) return false;
    const std::uint64_t size = GetSize(*file);
    if (size >= kTextSizeLimit) return false;
    if (size == 0 || ReadAt(*file, 0, size, content.ResizeForOverwrite(static_cast<std::uint32_t>(size)))) return true;
    content.Clear();
    return false;
}

}  // namespace

ModelLoader::~ModelLoader() = default;

ModelLoader::Error::~Error() = default;

bool ModelLoader::Load(const Path& path, StorageScene2* scene, std::uint32_t options) {
    ClearErrors();
    AString content;
    if (!ReadWhole(path, content)) {
        Raise(New<PathError>(path));
        return false;
    }
    if (content.IsEmpty()) {
        Raise(New<ContentError>(ContentError::Empty));
        return false;
    }
    return Load(std::move(content), scene, options);
}

void ModelLoader::Raise(const RefPointer<Error>& error) {
    errors.PushBack(error);
    errorMask |= error->kind;
}

void ModelLoader::ClearErrors() {
    errors.Clear();
    errorMask = 0;
}

}  // namespace ZEMA
