// What happens to a user's configuration of Recoll, and that it can be undone.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "host/handlers/RecollSetup.h"
#include "host/system/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;
using Text = std::optional<std::string>;

const std::string kLines = "[index]\nours = 1\n[stored]\nb =\n";
const std::string kEnd = "# <<< wqf setup recoll\n";

std::string Block(const std::string& remark = "") {
    return "# >>> wqf setup recoll" + remark + "\n" + kLines + kEnd;
}

}  // namespace

TEST(RecollLines, GoInAndOutWithoutATrace) {
    const struct {
        const char* what;
        Text before;
        RecollPlace place;
        std::string entered;
    } rows[] = {
        {"no file", std::nullopt, RecollPlace::Back, Block(" (new file)")},
        {"an empty file", "", RecollPlace::Back, Block()},
        {"behind the user's lines", "[index]\na = b\n", RecollPlace::Back, "[index]\na = b\n" + Block()},
        {"in front of them", "a = b\n[/x]\nc = d", RecollPlace::Front, Block() + "a = b\n[/x]\nc = d"},
        {"a last line without an end", "a = b", RecollPlace::Back, "a = b\n" + Block(" (and 1 line end above)")},
        {"a last line that goes on", "a = b \\\n", RecollPlace::Back,
         "a = b \\\n\n" + Block(" (and 1 line end above)")},
        {"a last line that goes on nowhere", "a = \\", RecollPlace::Back,
         "a = \\\n\n" + Block(" (and 2 line ends above)")},
        {"line ends of another system", "a = b\r\n", RecollPlace::Back, "a = b\r\n" + Block()},
        {"lines like ours that the user wrote", kLines, RecollPlace::Back, kLines + Block()},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string entered = WithRecollLines(row.before, kLines, row.place);
        EXPECT_EQ(entered, row.entered);
        EXPECT_EQ(WithRecollLines(entered, kLines, row.place), entered) << "twice is once";
        EXPECT_EQ(WithoutRecollLines(entered, kLines), row.before);
        EXPECT_EQ(WithoutRecollLines(row.before, kLines), row.before) << "nothing to take out";
    }
}

TEST(RecollLines, LeaveWhatTheUserWroteMeanwhile) {
    const struct {
        const char* what;
        std::string file;
        std::string entered;
        Text removed;
    } rows[] = {
        {"behind them",
         "a"
         "\n" +
             Block(" (and 1 line end above)") + "b\n",
         "a\n" + Block() + "b\n", "a\nb\n"},
        {"behind them, in a file of ours", Block(" (new file)") + "b\n", Block(" (new file)") + "b\n", "b\n"},
        {"between them, under the heading that it had",
         "a\n# >>> wqf setup recoll\n[index]\nours = 1\ntheirs = 2\n[stored]\nb =\n" + kEnd,
         "a\n[index]\ntheirs = 2\n" + Block(), "a\n[index]\ntheirs = 2\n"},
        {"a section between them", "# >>> wqf setup recoll\n[index]\nours = 1\n[view]\nc = d\n[stored]\nb =\n" + kEnd,
         "[view]\nc = d\n" + Block(), "[view]\nc = d\n"},
        {"the last mark is gone", "a\n# >>> wqf setup recoll\n" + kLines + "[x]\ny = z\n", "a\n[x]\ny = z\n" + Block(),
         "a\n[x]\ny = z\n"},
        {"some of ours are gone", "a\n# >>> wqf setup recoll\n[index]\n" + kEnd + "c\n", "a\n" + Block() + "c\n",
         "a\nc\n"},
        {"they came in twice", Block() + "a\n" + Block(), "a\n" + Block(), "a\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(WithRecollLines(row.file, kLines, RecollPlace::Back), row.entered);
        EXPECT_EQ(WithoutRecollLines(row.file, kLines), row.removed);
    }
}

TEST(RecollSetup, ChangesAFolderAndPutsItBack) {
    const TemporaryFolder folder;
    const RecollFolders folders{ZEMA_RECOLL_LINES, folder / "recoll"};
    const Result<std::vector<std::string>> entered = EnterRecollLines(folders);
    ASSERT_TRUE(entered) << entered.Why().text;
    EXPECT_EQ(entered->size(), 3u);
    EXPECT_EQ(EnterRecollLines(folders)->size(), 0u);
    EXPECT_EQ(RemoveRecollLines(folders)->size(), 3u);
    EXPECT_FALSE(fs::exists(folders.configuration)) << "it was not there before";
    EXPECT_EQ(RemoveRecollLines(folders)->size(), 0u);
}

// Configurations live elsewhere and are linked, and are not for everybody's eyes.
TEST(RecollSetup, KeepsLinksAndPermissions) {
    const TemporaryFolder folder;
    const std::string fields = folder.Write("kept", "[prefixes]\nmine = XYMINE\n");
    ASSERT_EQ(chmod(fields.c_str(), 0640), 0);
    fs::create_symlink("kept", folder / "fields");
    const RecollFolders folders{ZEMA_RECOLL_LINES, folder.Path().string()};
    ASSERT_TRUE(EnterRecollLines(folders));
    EXPECT_TRUE(fs::is_symlink(folder / "fields"));
    EXPECT_EQ(static_cast<int>(fs::status(fields).permissions()), 0640);
    EXPECT_NE(ReadRegularFile(fields, 10000)->find("wqfbricks"), std::string::npos);
    ASSERT_TRUE(RemoveRecollLines(folders));
    EXPECT_EQ(*ReadRegularFile(fields, 10000), "[prefixes]\nmine = XYMINE\n");
}

TEST(RecollSetup, WritesNothingWhereAnythingIsInTheWay) {
    const struct {
        const char* name;
        const char* text;  // null for a folder
        const char* reason;
    } rows[] = {
        {"fields", "[values]\nmine = 1001; type=int\n",
         "fields: the field 'mine' has the slot 1001, which 'wqfbricks' needs"},
        {"fields", nullptr, "fields: is a folder"},
    };
    for (const auto& row : rows) {
        const TemporaryFolder folder;
        if (row.text == nullptr) {
            fs::create_directory(folder / row.name);
        } else {
            folder.Write(row.name, row.text);
        }
        const Result<std::vector<std::string>> changed = EnterRecollLines({ZEMA_RECOLL_LINES, folder.Path().string()});
        ASSERT_FALSE(changed);
        EXPECT_EQ(changed.Why().text, folder / row.reason);
        EXPECT_FALSE(fs::exists(folder / "mimemap"));
    }
}

}  // namespace ZEMA::testing
