#include "tools/wqf/DesktopCommands.h"

#include <chrono>
#include <iostream>
#include <vector>

#include "host/documents/DocumentRecord.h"
#include "host/handlers/KFileMetaDataHandler.h"
#include "host/handlers/RecollHandler.h"
#include "host/handlers/RecollSetup.h"
#include "host/plugin/PluginHost.h"
#include "host/system/FileDescriptor.h"
#include "host/system/Output.h"
#include "host/system/Paths.h"
#include "host/system/Utf8Text.h"
#include "host/workers/DocumentWorkers.h"
#include "tools/wqf/ExitStatus.h"

namespace ZEMA {

namespace {

Failure AnswerRecoll(const ReadDocument& read, Output& output) {
    return ServeRecoll(
        std::cin, [&output](std::string_view answer) { return output.Write(answer); }, read);
}

Failure AnswerKFileMetaDataOnce(const ReadDocument& read, Output& output) {
    const Result<std::string> question = ReadStream("-");
    if (!question) return question.Why();
    output.Write(AnswerKFileMetaData(*question, read));
    return {};
}

// A new type alone does not have it look into a file again.
constexpr const char* kHowToReadAgain =
    "Recoll reads new documents from now on. Those that it has seen before it reads when it is told to:\n"
    "find FOLDER -iname '*.wqf' -o -iname '*.wqfml' | recollindex -i -Z\n";

}  // namespace

int RunHandler(Indexer indexer) {
    const Result<PluginHost> host = LoadPlugin("");
    if (!host) {
        PrintMessage(host.Why().text);
        return kExitWrongUse;
    }
    // One worker, since indexers ask for one document after the other. What lies at the path is looked at there too: a
    // file system that does not answer must not hold the handler up.
    WorkerOptions options;
    options.jobs = 1;
    // The indexer of KDE waits half a minute for an answer, and then has none.
    if (indexer == Indexer::KFileMetaData) options.timeout = std::chrono::seconds(25);
    Result<DocumentWorkers> workers = DocumentWorkers::Start(
        [&host](const FoundDocument& document) {
            return ImportDocument(*host, {document.path, CheckRegularFile(document.path)});
        },
        options);
    if (!workers) {
        PrintMessage(workers.Why().text);
        return kExitSomeFailed;
    }
    const auto read = [&workers](const std::string& path) { return workers->Read({path, {}}); };
    Output output;
    const Failure failure =
        indexer == Indexer::Recoll ? AnswerRecoll(read, output) : AnswerKFileMetaDataOnce(read, output);
    if (failure) {
        PrintMessage(failure.text);
        return kExitSomeFailed;
    }
    return ExitStatusOf(output);
}

int RunSetupRecoll(const SetupOptions& options) {
    const Result<RecollFolders> folders = FindRecollFolders(options.configuration);
    const Result<std::vector<std::string>> changed = !folders         ? folders.Why()
                                                     : options.remove ? RemoveRecollLines(*folders)
                                                                      : EnterRecollLines(*folders);
    if (!changed) {
        PrintMessage(changed.Why().text);
        return kExitSomeFailed;
    }
    std::string text;
    for (const std::string& path : *changed) text += EscapeControls(ReplaceInvalidUtf8(path)) + ": changed\n";
    if (!changed->empty() && !options.remove) text += kHowToReadAgain;
    if (changed->empty()) text = EscapeControls(ReplaceInvalidUtf8(folders->configuration)) + ": nothing to change\n";
    Output output;
    output.Write(text);
    return ExitStatusOf(output);
}

}  // namespace ZEMA
