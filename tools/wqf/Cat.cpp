// wqf cat: the contents of files, one behind the other.

#include <memory>
#include <vector>

#include "host/archive/StorageReader.h"
#include "host/archive/StorageTree.h"
#include "host/confinement/Confinement.h"
#include "host/system/Output.h"
#include "tools/wqf/ExitStatus.h"
#include "tools/wqf/StorageCommands.h"

namespace ZEMA {

namespace {

void Print(const std::string& path, StorageTree& tree, Output& output, StorageReport& report) {
    const Result<StorageItem> item = tree.Find(path);
    const Result<std::unique_ptr<StorageReader>> reader = item ? StorageReader::Open(*item) : item.Why();
    if (!reader) return report.Fail(path, reader.Why().text);
    std::vector<char> buffer(kReadBufferSize);
    while (!output.Failed()) {
        const Result<std::size_t> count = (*reader)->Read(buffer.data(), buffer.size());
        if (!count) return report.Fail(path, count.Why().text);
        if (*count == 0) return;
        output.Write({buffer.data(), *count});
    }
}

}  // namespace

int RunCat(const std::vector<std::string>& paths) {
    Confine();
    StorageReport report = ReportOf("read");
    StorageTree tree;
    Output output;
    for (const std::string& path : paths) Print(path, tree, output, report);
    return output.Failed() ? ExitStatusOf(output) : ExitStatusOf(report);
}

}  // namespace ZEMA
