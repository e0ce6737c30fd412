#include "host/documents/DocumentPath.h"

#include <sys/stat.h>

#include "host/archive/StorageTree.h"
#include "host/system/Paths.h"
#include "platform/Foundation/NSPathUtilities.h"

namespace ZEMA {

DocumentKind KindOfDocument(const std::string& given) {
    const std::string path = given.substr(0, given.find_last_not_of('/') + 1);  // as the storage tree takes it
    struct stat status;
    if (stat(path.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) return DocumentKind::Other;
        return status.st_size == 0 ? DocumentKind::EmptyFile : DocumentKind::File;
    }
    if (!LeadsIntoFile(path)) return DocumentKind::Other;
    const Result<StorageItem> item = StorageTree().Find(path);
    if (!item || !item->facts.IsFile()) return DocumentKind::Other;
    return item->facts.size == 0 ? DocumentKind::EmptyFile : DocumentKind::File;
}

Result<DocumentPath> DocumentPath::Of(const std::string& path) {
    const Result<std::string> whole = AbsolutePath(path);
    if (!whole) return whole.Why();
    DocumentPath result;
    result.text_ = Foundation::StringWithFileSystemRepresentation(*whole);
    if (result.text_) return result;
    const std::string file = StorageTree::FileOn(*whole);
    Result<FileDescriptor> opened = OpenRegularFile(file.empty() ? *whole : file);
    if (!opened) return opened.Why();
    const std::string inside = whole->substr(file.size());
    result.file_ = std::move(*opened);
    result.text_ =
        Foundation::StringWithFileSystemRepresentation("/dev/fd/" + std::to_string(result.file_.Get()) + inside);
    if (!result.text_) return Failure{FailureKind::Unsupported, "the name in the archive is not UTF-8"};
    return result;
}

}  // namespace ZEMA
