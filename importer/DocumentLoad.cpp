#include "importer/DocumentLoad.h"

#include <exception>
#include <new>
#include <typeinfo>

#include "core/Exception.h"
#include "loader/format4/ModelLoaderWQFML4.h"
#include "loader/format5/ModelLoaderWQFML5.h"
#include "storage/Directory.h"

namespace ZEMA {

namespace {

constexpr const char* kModelName = "IMAGE100.WQFML";

// What another loader may be able to read.
constexpr std::uint32_t kWorthAnotherFormat = ModelLoader::Error::VersionKind | ModelLoader::Error::ParserKind;

// A packaged document opens as a directory, since its archive is mounted on the way; the model is a member of it. What
// opens as none is the model itself. `package` keeps the archive mounted.
Path ModelPathOf(const String& storagePath, const RefPointer<Directory>& package) {
    if (!package) return Path(storagePath);
    Path model(*package);
    model.Append(kModelName);
    return model;
}

}  // namespace

DocumentLoad::DocumentLoad(std::uint32_t options, std::vector<LoadAttempt>* attempts)
    : options_(options), attempts_(attempts), scene_(New<StorageScene2>()) {}

bool DocumentLoad::Run(const String& storagePath) {
    const RefPointer<Directory> package = Path(storagePath).OpenDirectory(false);
    return LoadModel(ModelPathOf(storagePath, package));
}

bool DocumentLoad::LoadModel(const Path& model) {
    RefPointer<ModelLoader> loader = New<ModelLoaderWQFML5>(nullptr);
    if (Try(*loader, Version(5), model)) return true;
    if ((loader->errorMask & kWorthAnotherFormat) == 0) return false;
    loader = nullptr;  // what it still holds of the document goes before the document is read again
    loader = New<ModelLoaderWQFML4>();
    return Try(*loader, Version(4), model);
}

bool DocumentLoad::Try(ModelLoader& loader, const Version& format, const Path& model) {
    if (attempts_ != nullptr) {
        attempts_->emplace_back();
        attempts_->back().format = format.components[0];
    }
    bool loaded = false;
    try {
        loaded = loader.Load(model, scene_.Get(), options_);
        if (attempts_ != nullptr) Record(loader, loaded);
    } catch (...) {
        if (attempts_ != nullptr) {
            attempts_->back().reason = ReasonOfException();
            Record(loader, false);
        }
        throw;
    }
    if (loaded) version_ = format;
    return loaded;
}

void DocumentLoad::Record(const ModelLoader& loader, bool loaded) {
    LoadAttempt& attempt = attempts_->back();
    attempt.loaded = loaded;
    attempt.errorMask = loader.errorMask;
    attempt.errors.clear();  // an earlier try may have run out of memory half way
    attempt.errors.reserve(loader.errors.Size());
    for (const RefPointer<ModelLoader::Error>& error : loader.errors) {
        String text;
        error->Describe(text);
        attempt.errors.emplace_back(text.ToAString().View());
    }
}

std::string ReasonOfException() {
    try {
        throw;
    } catch (const RangeException*) {
        return "a text in it is too long";
    } catch (const std::bad_alloc& error) {
        // A limit ends a load in the same way as memory does, but has words of its own.
        return typeid(error) == typeid(std::bad_alloc) ? "out of memory" : error.what();
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "an unknown exception";
    }
}

}  // namespace ZEMA
