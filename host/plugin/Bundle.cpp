#include "host/plugin/Bundle.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "host/print/PropertyList.h"
#include "host/system/FileDescriptor.h"
#include "host/system/Paths.h"

namespace ZEMA {

namespace {

bool IsFolder(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

#ifdef __APPLE__
constexpr const char* kModuleFolder = "/Contents/MacOS/";
#else
constexpr const char* kModuleFolder = "/Contents/Linux/";
#endif

constexpr std::size_t kLargestPropertyList = 1 << 20;  // bytes; ours has 3,000

// The platform reads almost any text as a UUID, with zeros for what it cannot read, so a slip of the pen would only
// show as a factory that makes nothing.
bool IsUUID(const std::string& text) {
    constexpr std::string_view kForm = "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";
    return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), [](char unit, char form) {
        return form == 'h' ? std::isxdigit(static_cast<unsigned char>(unit)) != 0 : unit == form;
    });
}

// The module must stay inside the bundle.
bool IsFileName(const std::string& text) {
    return !text.empty() && text != "." && text != ".." && text.find('/') == std::string::npos;
}

Failure Fault(const std::string& text) {
    return {FailureKind::Damaged, text};
}

// What a host needs of a property list.
class InfoReader {
public:
    explicit InfoReader(const Value::Dictionary& list) : list_(list) {}

    Result<std::string> Executable() const {
        const Value* const value = Find(list_, "CFBundleExecutable");
        if (value == nullptr) return Fault("CFBundleExecutable is missing");
        const std::string* const name = value->AsText();
        if (name == nullptr || !IsFileName(*name)) return Fault("CFBundleExecutable is no file name");
        return *name;
    }

    Result<std::vector<PlugInFactory>> Factories() const {
        const auto functions = Dictionary("CFPlugInFactories");
        if (!functions) return functions.Why();
        const auto types = Dictionary("CFPlugInTypes");
        if (!types) return types.Why();
        std::vector<PlugInFactory> factories;
        for (const auto& [type, value] : **types) {
            if (!IsUUID(type)) return Fault("CFPlugInTypes: '" + type + "' is no UUID");
            if (value.AsList() == nullptr) return Fault("CFPlugInTypes: the value of " + type + " is no array");
            for (const Value& each : *value.AsList()) {
                const Result<PlugInFactory> factory = Factory(type, each.AsText(), **functions);
                if (!factory) return factory.Why();
                factories.push_back(*factory);
            }
        }
        if (factories.empty()) return Fault("CFPlugInTypes names no factory");
        return factories;
    }

    // Nothing can be wrong here: no host needs a document type to import.
    std::string ContentType() const {
        const Value* value = Find(list_, "CFBundleDocumentTypes");
        value = value == nullptr ? nullptr : First(*value);
        value = value == nullptr || value->AsDictionary() == nullptr
                    ? nullptr
                    : Find(*value->AsDictionary(), "LSItemContentTypes");
        value = value == nullptr ? nullptr : First(*value);
        return value == nullptr || value->AsText() == nullptr ? "public.data" : *value->AsText();
    }

private:
    Result<const Value::Dictionary*> Dictionary(const char* key) const {
        const Value* const value = Find(list_, key);
        if (value == nullptr) return Fault(std::string(key) + " is missing");
        if (value->AsDictionary() == nullptr) return Fault(std::string(key) + " is no dictionary");
        return value->AsDictionary();
    }

    static Result<PlugInFactory> Factory(const std::string& type, const std::string* factory,
                                         const Value::Dictionary& functions) {
        if (factory == nullptr || !IsUUID(*factory)) {
            return Fault("CFPlugInTypes: a factory of " + type + " is no UUID");
        }
        const Value* const function = Find(functions, *factory);
        if (function == nullptr) return Fault("CFPlugInFactories lacks the factory " + *factory);
        if (function->AsText() == nullptr || function->AsText()->empty()) {
            return Fault("CFPlugInFactories: the factory " + *factory + " has no function");
        }
        return PlugInFactory{type, *factory, *function->AsText()};
    }

    static const Value* First(const Value& value) {
        return value.AsList() == nullptr || value.AsList()->empty() ? nullptr : &value.AsList()->front();
    }

    const Value::Dictionary& list_;
};

Result<BundleInfo> InfoOf(const std::string& bundle, const std::string& propertyList) {
    const Result<Value> list = ReadPropertyList(propertyList);
    if (!list) return list.Why();
    if (list->AsDictionary() == nullptr) return Fault("it is no dictionary");
    const InfoReader reader(*list->AsDictionary());
    const Result<std::string> executable = reader.Executable();
    if (!executable) return executable.Why();
    const Result<std::vector<PlugInFactory>> factories = reader.Factories();
    if (!factories) return factories.Why();
    return BundleInfo{bundle + kModuleFolder + *executable, *factories, reader.ContentType()};
}

}  // namespace

Result<std::string> FindBundle(const std::string& given) {
    if (!given.empty()) {
        if (IsFolder(given)) return given;
        return Failure{FailureKind::Missing, given + ": there is no such bundle"};
    }
    const std::string bundle = BesideProgram("lib/wqf/WQFImporter.mdimporter");
    if (bundle.empty()) {  // never looks in the current folder: whoever can write there would run code here
        return Failure{FailureKind::Missing,
                       "the system does not tell where this program lies; name a bundle with --bundle"};
    }
    if (IsFolder(bundle)) return bundle;
    return Failure{FailureKind::Missing, "there is no bundle " + bundle + "; name one with --bundle"};
}

Result<BundleInfo> ReadBundleInfo(const std::string& bundle) {
    const std::string path = bundle + "/Contents/Info.plist";
    const Result<std::string> text = ReadRegularFile(path, kLargestPropertyList);
    if (!text) return text.Why().In(path);
    Result<BundleInfo> info = InfoOf(bundle, *text);
    if (!info) return info.Why().In(path);
    return info;
}

}  // namespace ZEMA
