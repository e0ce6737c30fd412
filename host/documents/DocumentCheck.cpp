#include "host/documents/DocumentCheck.h"

#include <filesystem>

#include "host/system/FileDescriptor.h"
#include "importer/DocumentLoad.h"
#include "importer/StorageSession.h"
#include "platform/Foundation/NSAutoreleasePool.h"
#include "platform/Foundation/NSPathUtilities.h"

namespace ZEMA {

namespace {

// What kept the loaders from being asked; otherwise empty.
std::string Load(const std::string& path, std::uint32_t options, DocumentCheck& check,
                 RefPointer<StorageScene2>* scene) {
    const Foundation::NSAutoreleasePool pool;
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(path, error);
    if (error) return SystemFailure(error.value()).text;
    const auto absolute = Foundation::StringWithFileSystemRepresentation(whole.string());
    if (!absolute) return "the path is not UTF-8";
    DocumentLoad load(options, &check.attempts);
    const StorageSession storage;
    if (!storage.Ready()) return "the storage tree is not available";
    check.loaded = load.Run(StoragePathOf(absolute.Get()));
    if (!check.loaded) return {};
    String version;
    load.MarkupVersion().AppendTo(version);
    check.version = version.ToAString().View();
    if (scene != nullptr) *scene = load.SharedScene();
    return {};
}

}  // namespace

DocumentCheck CheckDocument(const std::string& path, std::uint32_t options, RefPointer<StorageScene2>* scene) {
    DocumentCheck check;
    try {
        check.reason = Load(path, options, check, scene);
    } catch (...) {
        // An attempt that was under way has noted the reason itself.
        check.loaded = false;
        if (check.attempts.empty() || check.attempts.back().reason.empty()) check.reason = ReasonOfException();
    }
    return check;
}

bool LoadedWithoutError(const DocumentCheck& check) {
    return check.loaded && check.attempts.back().errors.empty();
}

std::vector<std::string> ReasonsOf(const DocumentCheck& check) {
    if (!check.reason.empty()) return {check.reason};
    if (check.attempts.empty()) return {"no loader was asked"};
    const LoadAttempt& last = check.attempts.back();
    if (!last.reason.empty()) return {last.reason};
    if (last.errors.empty()) return {"the model is not complete, and the loader names no error"};
    return last.errors;
}

std::string FailureReasonOf(const std::string& path) {
    if (const auto file = OpenRegularFile(path); !file) return file.Why().text;
    const DocumentCheck check = CheckDocument(path);
    if (check.loaded) return "the plug-in did not import it and does not say why";
    const std::vector<std::string> reasons = ReasonsOf(check);
    const std::size_t more = reasons.size() - 1;
    return reasons.front() + (more == 0 ? "" : " (and " + std::to_string(more) + " more)");
}

}  // namespace ZEMA
