#include "host/plugin/Bundle.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "host/print/PropertyList.h"
#include "host/system/FileDescriptor.h"

#ifdef __APPLE__
#include <mach-o/dyld.h>

#include <climits>
#endif

namespace ZEMA {

namespace {

// The folder of the running program, links followed; empty when the system cannot tell.
std::filesystem::path ProgramFolder() {
    std::error_code error;
#ifdef __APPLE__
    char path[PATH_MAX];
    std::uint32_t size = sizeof(path);
    if (_NSGetExecutablePath(path, &size) != 0) return {};
    return std::filesystem::canonical(path, error).parent_path();
#else
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
#endif
}

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

// What a host needs of a property list. Each step answers false after it has put into words what is wrong.
class InfoReader {
public:
    InfoReader(const Value::Dictionary& list, std::string& problem) : list_(list), problem_(problem) {}

    bool ReadExecutable(std::string& executable) {
        const Value* const value = Find(list_, "CFBundleExecutable");
        if (value == nullptr) return Fault("CFBundleExecutable is missing");
        if (value->AsText() == nullptr || !IsFileName(*value->AsText())) {
            return Fault("CFBundleExecutable is no file name");
        }
        executable = *value->AsText();
        return true;
    }

    bool ReadFactories(std::vector<PlugInFactory>& factories) {
        const Value::Dictionary* const functions = GetDictionary("CFPlugInFactories");
        const Value::Dictionary* const types = functions == nullptr ? nullptr : GetDictionary("CFPlugInTypes");
        if (types == nullptr) return false;
        for (const auto& [type, value] : *types) {
            if (!IsUUID(type)) return Fault("CFPlugInTypes: '" + type + "' is no UUID");
            if (value.AsList() == nullptr) return Fault("CFPlugInTypes: the value of " + type + " is no array");
            for (const Value& factory : *value.AsList()) {
                if (!AddFactory(type, factory.AsText(), *functions, factories)) return false;
            }
        }
        return !factories.empty() || Fault("CFPlugInTypes names no factory");
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
    bool Fault(const std::string& problem) {
        problem_ = problem;
        return false;
    }

    const Value::Dictionary* GetDictionary(const char* key) {
        const Value* const value = Find(list_, key);
        if (value == nullptr) {
            Fault(std::string(key) + " is missing");
        } else if (value->AsDictionary() == nullptr) {
            Fault(std::string(key) + " is no dictionary");
        }
        return value == nullptr ? nullptr : value->AsDictionary();
    }

    bool AddFactory(const std::string& type, const std::string* factory, const Value::Dictionary& functions,
                    std::vector<PlugInFactory>& factories) {
        if (factory == nullptr || !IsUUID(*factory)) {
            return Fault("CFPlugInTypes: a factory of " + type + " is no UUID");
        }
        const Value* const function = Find(functions, *factory);
        if (function == nullptr) return Fault("CFPlugInFactories lacks the factory " + *factory);
        if (function->AsText() == nullptr || function->AsText()->empty()) {
            return Fault("CFPlugInFactories: the factory " + *factory + " has no function");
        }
        factories.push_back({type, *factory, *function->AsText()});
        return true;
    }

    static const Value* First(const Value& value) {
        return value.AsList() == nullptr || value.AsList()->empty() ? nullptr : &value.AsList()->front();
    }

    const Value::Dictionary& list_;
    std::string& problem_;
};

bool ReadInfo(const std::string& bundle, const std::string& text, BundleInfo& info, std::string& problem) {
    const std::optional<Value> list = ReadPropertyList(text, problem);
    if (!list) return false;
    if (list->AsDictionary() == nullptr) {
        problem = "it is no dictionary";
        return false;
    }
    InfoReader reader(*list->AsDictionary(), problem);
    std::string executable;
    if (!reader.ReadExecutable(executable) || !reader.ReadFactories(info.factories)) return false;
    info.module = bundle + kModuleFolder + executable;
    info.contentType = reader.ContentType();
    return true;
}

}  // namespace

std::optional<std::string> FindBundle(const std::string& given, std::string& problem) {
    if (!given.empty()) {
        if (IsFolder(given)) return given;
        problem = given + ": there is no such bundle";
        return std::nullopt;
    }
    const std::filesystem::path prefix = ProgramFolder().parent_path();
    if (prefix.empty()) {  // never looks in the current folder: whoever can write there would run code here
        problem = "the system does not tell where this program lies; name a bundle with --bundle";
        return std::nullopt;
    }
    const std::filesystem::path bundle = prefix / "lib/wqf/WQFImporter.mdimporter";
    if (IsFolder(bundle)) return bundle.string();
    problem = "there is no bundle " + bundle.string() + "; name one with --bundle";
    return std::nullopt;
}

std::optional<BundleInfo> ReadBundleInfo(const std::string& bundle, std::string& problem) {
    const std::string path = bundle + "/Contents/Info.plist";
    const Result<std::string> text = ReadRegularFile(path, kLargestPropertyList);
    BundleInfo info;
    if (!text) {
        problem = text.Why().text;
    } else if (ReadInfo(bundle, *text, info, problem)) {
        return info;
    }
    problem = path + ": " + problem;
    return std::nullopt;
}

}  // namespace ZEMA
