// The road of one document from its path to a scene.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/AString.h"
#include "core/RefPointer.h"
#include "core/String.h"
#include "loader/ModelLoader.h"
#include "loader/Version.h"
#include "scene/StorageScene2.h"
#include "storage/Path.h"

namespace ZEMA {

// The storage path of a document: /a/b.wqf becomes file/a/b.wqf.
//
// The path is standardised first; a relative one starts at the current directory. When it names a symbolic link, the
// link's destination takes its place, once; a relative destination starts at the link's folder. The empty path, being
// relative, names the current directory.
String StoragePathOf(CFStringRef nativePath);

// The option bits that the importer hands to the loaders.
inline constexpr std::uint32_t kImportOptions = 1;

// The member of an archive that is its model, in any case of letters.
inline constexpr const char* kModelName = "IMAGE100.WQFML";

// What one loader made of a document.
struct LoadAttempt {
    std::uint32_t format = 0;  // of the markup: 5 or 4
    bool loaded = false;
    std::uint32_t errorMask = 0;
    std::vector<std::string> errors;    // what each error says of itself, in UTF-8
    std::uint32_t firstErrorKind = 0;   // of ModelLoader::Error; 0 where there is no error
    std::optional<std::string> reason;  // when memory or a limit ended the attempt before its end: which
};

// Opens one document and loads its model: an archive is mounted and its model member read, anything else is read as a
// bare model. Used once, by the importer and by whoever wants to know what the importer found.
//
// Ownership: keeps the scene; the loaders, the archive and the paths are let go before Run returns.
// Errors:    what memory or a limit ends is thrown, after it has been noted as the `reason` of the attempt.
// Threads:   under a StorageSession.
class DocumentLoad {
public:
    // `attempts`, unless null, receives a record of every attempt; without it no error is put into words.
    explicit DocumentLoad(std::uint32_t options = kImportOptions, std::vector<LoadAttempt>* attempts = nullptr);

    // Format 5 is tried first, and format 4 where that failed because of the version or the parser.
    [[nodiscard]] bool Run(const String& storagePath);
    // The same for the text of a model that was read already.
    [[nodiscard]] bool RunText(const AString& text);

    // After a Run that answered true: the model, and the version of the markup it was read from.
    const StorageScene2& Scene() const { return *scene_; }
    const RefPointer<StorageScene2>& SharedScene() const { return scene_; }  // for who keeps it longer than the load
    const Version& MarkupVersion() const { return version_; }

private:
    // Has a loader load the model, wherever that comes from.
    using Source = std::function<bool(ModelLoader& loader)>;

    bool LoadModel(const Source& load);
    bool Try(ModelLoader& loader, const Version& format, const Source& load);
    void Record(const ModelLoader& loader, bool loaded);

    std::uint32_t options_;
    std::vector<LoadAttempt>* attempts_;
    RefPointer<StorageScene2> scene_;
    Version version_;
};

// In words, why the exception that is being handled ended a load. Call it inside a catch clause only.
std::string ReasonOfException();

}  // namespace ZEMA
