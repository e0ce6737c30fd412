// Both loaders on any markup, and everything that is made of what they load: attributes, JSON, the words of errors.
#include "fuzz/Fuzzing.h"
#include "host/print/AttributeText.h"
#include "host/print/PropertyList.h"
#include "host/print/SceneJson.h"
#include "host/system/Utf8Text.h"
#include "importer/AttributeSet.h"
#include "loader/format4/ModelLoaderWQFML4.h"
#include "loader/format5/ModelLoaderWQFML5.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {

namespace {

using fuzzing::Require;

void ExamineAttributes(const StorageScene2& scene) {
    const Foundation::CFPointer<CFMutableDictionaryRef> written(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    WriteAttributes(scene, Version(5), written.Get());
    Require(CFDictionaryGetCount(written.Get()) >= 3, "version and bricks are always told");
    const Value value = ValueOf(written.Get());
    Require(IsUtf8(AttributeText(*value.AsDictionary())) && IsUtf8(JsonText(value)), "attributes print as UTF-8");
    std::string list = PropertyListHead();
    AppendPropertyListValue(value, 0, list);
    Require(bool(ReadPropertyList(list + PropertyListTail())), "attributes make a property list");
}

void ExamineErrors(const ModelLoader& loader) {
    std::uint32_t kinds = 0;
    for (const RefPointer<ModelLoader::Error>& error : loader.errors) {
        String text;
        error->Describe(text);
        Require(!text.IsEmpty(), "an error has words");
        kinds |= error->kind;
    }
    Require(kinds == loader.errorMask, "the mask is the kinds of all errors");
}

void Load(ModelLoader& loader, std::string_view text, std::uint32_t options) {
    const RefPointer<StorageScene2> scene = New<StorageScene2>();
    try {
        static_cast<void>(
            loader.Load(AString(text.data(), static_cast<std::uint32_t>(text.size())), scene.Get(), options));
    } catch (const IndexLimitExceeded&) {
        return;
    }
    ExamineErrors(loader);
    ExamineAttributes(*scene);
    const std::string json = JsonOf([&](JsonWriter& writer) { WriteScene(*scene, writer); });
    Require(IsUtf8(json), "a scene prints as UTF-8");
}

}  // namespace

}  // namespace ZEMA

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ZEMA;
    const std::string_view text = fuzzing::TextOf(data, size);
    Load(*New<ModelLoaderWQFML5>(nullptr), text, 0);
    for (const std::uint32_t options : {0u, ModelLoaderWQFML4::kSkipJoints | ModelLoaderWQFML4::kAllowUnknownCameras}) {
        Load(*New<ModelLoaderWQFML4>(), text, options);
    }
    return 0;
}
