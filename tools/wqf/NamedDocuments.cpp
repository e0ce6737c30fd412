#include "tools/wqf/NamedDocuments.h"

#include <string>

#include "host/documents/DocumentFinder.h"

namespace ZEMA {

std::optional<std::vector<FoundDocument>> FindNamedDocuments(const DocumentPaths& named) {
    const Result<std::vector<std::string>> paths =
        named.files0From.empty() ? named.paths : ReadPathList(named.files0From);
    if (!paths) {
        PrintMessage(named.files0From, paths.Why().text);
        return std::nullopt;
    }
    std::vector<FoundDocument> documents;
    for (const std::string& path : *paths) {
        if (!FindDocuments(path, documents)) PrintMessage(path, "there are no documents in this folder");
    }
    return documents;
}

}  // namespace ZEMA
