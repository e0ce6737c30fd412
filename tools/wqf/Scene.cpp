// wqf scene: the model in a document, whole.

#include <string>

#include "host/documents/DocumentCheck.h"
#include "host/print/JsonWriter.h"
#include "host/print/SceneJson.h"
#include "host/system/Output.h"
#include "host/system/Paths.h"
#include "tools/wqf/Commands.h"

namespace ZEMA {

namespace {

void WriteDocument(const std::string& path, const DocumentCheck& check, const StorageScene2* scene, JsonWriter& json) {
    json.BeginObject();
    json.Text("path", path);
    json.Key("version");
    if (scene != nullptr) {
        json.Text(check.version);
        json.Key("scene");
        WriteScene(*scene, json);
    } else {
        json.Null();
        json.Key("scene");
        json.Null();
    }
    json.EndObject();
}

void PrintReasons(const std::string& path, const DocumentCheck& check) {
    const Failure failure = LeadsIntoFile(path) ? Failure() : CheckRegularFile(path);
    if (failure) PrintMessage(path, failure.text);
    for (const std::string& reason : ReasonsOf(check)) PrintMessage(path, reason);
}

}  // namespace

int RunScene(const SceneOptions& options) {
    RefPointer<StorageScene2> scene;
    const DocumentCheck check = CheckDocument(options.path, options.loaderOptions, &scene);
    Output output;
    JsonWriter json([&output](std::string_view piece) { return output.Write(piece); });
    WriteDocument(options.path, check, scene.Get(), json);
    json.Finish();
    const bool loaded = scene != nullptr;
    scene = nullptr;
    if (!loaded) PrintReasons(options.path, check);
    if (output.Failed()) return ExitStatusOf(output);
    return loaded ? kExitDone : kExitSomeFailed;
}

}  // namespace ZEMA
