// Documents packed by the tools that people have.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "host/documents/DocumentRecord.h"
#include "host/plugin/PluginHost.h"
#include "tests/importer/Attributes.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

TEST(ImportToolArchives, ReadsWhatStandardToolsWrite) {
    const char* const kRefused = "";
    const struct {
        const char* tool;
        const char* command;  // in a folder with the model and others; makes ../a.wqf
        const char* attributes;
    } rows[] = {
        {"zip", "zip -q ../a.wqf IMAGE100.WQFML", kSmallModelText},
        {"zip", "zip -q -0 ../a.wqf IMAGE100.WQFML", kSmallModelText},
        {"zip", "zip -q -r ../a.wqf . && echo a remark | zip -q -z ../a.wqf >/dev/null", kSmallModelText},
        {"zip", "mv IMAGE100.WQFML Image100.wqfml && zip -q -r -X ../a.wqf Image100.wqfml notes", kSmallModelText},
        {"7z", "7z a -tzip -bso0 -bsp0 ../a.wqf .", kSmallModelText},
        {"7z", "7z a -tzip -mx=0 -bso0 -bsp0 ../a.wqf .", kSmallModelText},
        {"python3", "python3 -m zipfile -c ../a.wqf IMAGE100.WQFML notes", kSmallModelText},
        {"python3",
         "python3 -c 'import sys,zipfile; zipfile.ZipFile(sys.stdout.buffer,\"w\",8).write(\"IMAGE100.WQFML\")' | "
         "cat > ../a.wqf",
         kSmallModelText},
        // These tell the sizes both in the header and behind the data, which readers of the format may take amiss.
        {"zip", "zip -q - IMAGE100.WQFML | cat > ../a.wqf", kRefused},
        {"bsdtar", "bsdtar -c --format=zip -f ../a.wqf IMAGE100.WQFML", kRefused},
    };
    std::string problem;
    const std::unique_ptr<PluginHost> host = PluginHost::Load(ZEMA_BUNDLE, problem);
    ASSERT_TRUE(host) << problem;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        if (std::system(("command -v " + std::string(row.tool) + " >/dev/null").c_str()) != 0) continue;
        const TemporaryFolder folder;
        std::filesystem::create_directories(folder.Path() / "content/notes");
        folder.Write("content/IMAGE100.WQFML", SmallModel5());
        folder.Write("content/notes/about.txt", "nothing of note");
        ASSERT_EQ(std::system(("cd '" + (folder / "content") + "' && " + row.command).c_str()), 0);
        const Attributes attributes = NewAttributes();
        const bool imported = host->Import(PathString(folder / "a.wqf").Get(), attributes.Get());
        EXPECT_EQ(imported ? TextOf(attributes) : "", row.attributes);
        const std::string error = ImportDocument(*host, {folder / "a.wqf", {}}).error;
        EXPECT_EQ(error.substr(0, 9), imported ? "" : "pathError");
    }
}

}  // namespace ZEMA::testing
