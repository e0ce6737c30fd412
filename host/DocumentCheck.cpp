#include "host/DocumentCheck.h"

#include "host/FileReading.h"
#include "importer/DocumentPath.h"
#include "importer/StorageSession.h"
#include "platform/Foundation/NSAutoreleasePool.h"
#include "platform/Foundation/NSPathUtilities.h"

namespace ZEMA {

namespace {

// False when the storage tree cannot be used at all.
bool Load(const std::string& path, std::uint32_t options, DocumentCheck& check) {
    const Foundation::NSAutoreleasePool pool;
    DocumentLoad load(options, &check.attempts);
    const StorageSession storage;
    if (!storage.Ready()) return false;
    check.loaded = load.Run(StoragePathOf(Foundation::StringWithFileSystemRepresentation(path).Get()));
    if (check.loaded) {
        String version;
        load.MarkupVersion().AppendTo(version);
        check.version = version.ToAString().View();
    }
    return true;
}

}  // namespace

DocumentCheck CheckDocument(const std::string& path, std::uint32_t options) {
    DocumentCheck check;
    try {
        if (!Load(path, options, check)) check.reason = "the storage tree is not available";
    } catch (...) {
        // An attempt that was under way has noted the reason itself.
        check.loaded = false;
        if (check.attempts.empty() || check.attempts.back().reason.empty()) check.reason = ReasonOfException();
    }
    return check;
}

std::string FailureReasonOf(const std::string& path) {
    const std::string unreadable = WhyUnreadable(path);
    if (!unreadable.empty()) return unreadable;
    const DocumentCheck check = CheckDocument(path);
    if (!check.reason.empty()) return check.reason;
    if (check.attempts.empty() || check.loaded) return "the plug-in did not import it and does not say why";
    const LoadAttempt& last = check.attempts.back();
    if (!last.reason.empty()) return last.reason;
    if (last.errors.empty()) return "the model is not complete, and the loader names no error";
    const std::size_t more = last.errors.size() - 1;
    return last.errors.front() + (more == 0 ? "" : " (and " + std::to_string(more) + " more)");
}

}  // namespace ZEMA
