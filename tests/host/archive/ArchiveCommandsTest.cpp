#include "host/archive/ArchiveCommands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "host/archive/ArchiveRecords.h"
#include "host/archive/DescriptorFile.h"
#include "host/archive/LocalRecord.h"
#include "host/system/FileDescriptor.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

// An archive of stored members, in words: "name=contents", or "folder/".
std::string ArchiveOf(const std::string& members) {
    ArchiveBuilder builder;
    std::istringstream words(members);
    for (std::string text; words >> text;) {
        ArchiveMember member;
        member.name = text.substr(0, text.find('='));
        if (member.name.size() < text.size()) member.contents = text.substr(member.name.size() + 1);
        if (member.contents == "link") member.externalAttributes = 0120777u << 16;
        if (member.contents == "secret") member.flags = 1;
        if (member.contents == "set-id") member.externalAttributes = 0106755u << 16;
        builder.Add(member);
    }
    return builder.Bytes();
}

// The same of a file, in the order of the directory.
std::string MembersOf(const std::string& path) {
    const Result<FileDescriptor> file = OpenRegularFile(path);
    const Result<ArchiveRecords::Pointer> records = ArchiveRecords::Read(New<DescriptorFile>(file->Get()));
    FileWindow window;
    std::string members;
    for (std::size_t i = 0; records && i < (*records)->Count(); ++i) {
        const ArchiveEntry entry = (*records)->Entry(i);
        const Result<LocalRecord> local = ReadLocalRecord(window, **records, entry);
        std::string contents(entry.compressedSize, '\0');
        EXPECT_TRUE(local && ReadAllAt(file->Get(), local->dataOffset, contents.size(), contents.data()));
        members += (members.empty() ? "" : " ") + std::string(entry.name) + (entry.IsFolder() ? "" : "=" + contents);
    }
    return members;
}

// In a folder with the archives "x" and "y" and the files "b" and "d/c".
class Commands {
public:
    explicit Commands(const std::string& members) : before_(fs::current_path()) {
        folder_.Write("x", ArchiveOf(members));
        folder_.Write("y", ArchiveOf("old=O"));
        folder_.Write("b", "B");
        fs::create_directory(folder_ / "d");
        folder_.Write("d/c", "C");
        fs::current_path(folder_.Path());
    }
    ~Commands() { fs::current_path(before_); }

    // Runs "cp [-r] FROM... TO", "mv FROM... TO", "rm [-r] PATH..." or "mkdir [-p] PATH...", and gives all messages,
    // without what every failure begins with.
    std::string Run(const std::string& line) {
        std::istringstream words(line);
        std::vector<std::string> paths;
        std::string told, command, word;
        bool option = false;
        words >> command;
        while (words >> word) word.starts_with('-') ? void(option = true) : paths.push_back(word);
        const std::string begin = "cannot do ";
        StorageReport report("do", [&](const std::string& message) {
            told += (told.empty() ? "" : "\n") + message.substr(message.starts_with(begin) ? begin.size() : 0);
        });
        if (command == "rm") {
            RemovePaths(paths, {.recursive = option}, report);
        } else if (command == "mkdir") {
            MakeFolders(paths, {.parents = option}, report);
        } else {
            const bool move = command == "mv";
            CopyPaths({paths.begin(), paths.end() - 1}, paths.back(), {.recursive = option || move, .move = move},
                      report);
        }
        return told;
    }

    // All files but the archives, with their contents, and "!" where a file would change the user.
    std::string Outside() const {
        std::set<std::string> files;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(".")) {
            const std::string path = entry.path().string().substr(2);
            if (!entry.is_regular_file() || path == "x" || path == "y") continue;
            const bool changesUser = (entry.status().permissions() & fs::perms::set_uid) != fs::perms::none;
            files.insert(path + "=" + folder_.Read(path) + (changesUser ? "!" : ""));
        }
        std::string all;
        for (const std::string& file : files) all += (all.empty() ? "" : " ") + file;
        return all;
    }

private:
    TemporaryFolder folder_;
    fs::path before_;
};

struct Row {
    const char* what;
    const char* before;  // in "x"
    const char* line;
    const char* told;
    const char* after;
    const char* y = "old=O";
    const char* outside = "b=B d/c=C";
};

void Try(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Commands commands(row.before);
        EXPECT_EQ(commands.Run(row.line), row.told);
        EXPECT_EQ(MembersOf("x"), row.after);
        EXPECT_EQ(MembersOf("y"), row.y);
        EXPECT_EQ(commands.Outside(), row.outside);
    }
}

const char* const kDouble = "a=1 b=2 b=3 c=4";
const char* const kCases = "a=1 A=2 Dir/x=3 dir/y=4 dir/\xFF=5 dir/y=6";
const char* const kBelow = "f=1 f/x=2 g/ g/h=3";

}  // namespace

// Of all members, whether or not a path leads to them.
TEST(ArchiveCommands, ReplaceExactlyWhatIsNamed) {
    Try({
        {"all members of a name", kDouble, "cp b x", "", "a=1 c=4 b=B"},
        {"of the same spelling", kCases, "cp b x/A", "'x/A' is replaced, but an import reads 'a'",
         "a=1 Dir/x=3 dir/y=4 dir/\xFF=5 dir/y=6 A=B"},
        {"the one that paths lead to", kCases, "cp b x/a", "'x/a' is replaced, but an import reads 'A'",
         "A=2 Dir/x=3 dir/y=4 dir/\xFF=5 dir/y=6 a=B"},
        {"another spelling where there is no such one", "Dir/x=1", "cp b x/DIR/X", "", "Dir/x=B"},
        {"in a folder of another spelling", "Dir/x=1", "cp b x/DIR", "", "Dir/x=1 Dir/b=B"},
        {"what cannot be opened, by its folder", "b=secret c=1", "cp b x", "", "c=1 b=B"},
        {"what cannot be opened, by its name", "b=secret c=1", "cp b x/b", "", "c=1 b=B"},
        {"nothing for a folder that is there", "d/e/f=1", "mkdir -p x/D/E x/D/G", "", "d/e/f=1 d/G/"},
    });
}

TEST(ArchiveCommands, RemoveExactlyWhatIsNamed) {
    Try({
        {"all members of a name", kDouble, "rm x/B", "", "a=1 c=4"},
        {"no other spelling", kCases, "rm x/A", "", "a=1 Dir/x=3 dir/y=4 dir/\xFF=5 dir/y=6"},
        {"a folder with what no path leads to", kCases, "rm -r x/dir",
         "'x/dir': 'Dir/x' is spelled otherwise, and stays", "a=1 A=2 Dir/x=3"},
        {"not what lies below a file", kBelow, "rm x/f", "'x/f': is a folder (-r removes folders)", kBelow},
        {"a file with what lies below it", kBelow, "rm -r x/f", "", "g/ g/h=3"},
        {"a folder that is only there by what lies in it", "a/b=1 a-c=2", "rm -r x/a", "", "a-c=2"},
        {"a name that is no text, and nothing else", "a=1 \xFF=2 \xFF/b=3 \xFE=4 d/e/\xFF=5",
         "rm -r x/\xFF x/\xFC x/d/e", "'x/\xFC': no such file", "a=1 \xFE=4"},
        {"what can be, in every archive", "a=1 b=2", "rm x/a x/none y/old", "'x/none': no such file", "b=2", ""},
    });
}

TEST(ArchiveCommands, MoveWholeFoldersWithinAnArchive) {
    Try({
        {"with what no path leads to", kCases, "mv x/dir x/e", "'x/dir': 'Dir/x' is spelled otherwise, and stays",
         "a=1 A=2 Dir/x=3 e/y=4 e/\xFF=5 e/y=6"},
        {"with what lies below a file", kBelow, "mv x/f x/g", "", "g/f=1 g/f/x=2 g/ g/h=3"},
        {"over a file", kDouble, "mv x/a x/c", "", "c=1 b=2 b=3"},
        {"over a folder that looks empty", "p/b/ p/b/\xFF=1 b/c=2", "mv x/b x/p", "", "p/b/\xFF=1 p/b/c=2"},
        {"but for what went before", "a/ b/c=1 b/d=2", "mv x/b/c x/b x/a", "", "a/ a/c=1 a/b/d=2"},
        {"to a name that only differs in case", "a=1 b=2", "mv x/a x/A", "", "A=1 b=2"},
        {"folders too, in one that is spelled otherwise", "D/dir/ D/dir/a=1 b=2", "mv x/d/dir x/d/DIR", "",
         "D/DIR/ D/DIR/a=1 b=2"},
        {"but not to one that is there as well", "A=2 a=1", "mv x/A x/a", "'x/A': is the same file as 'x/a'",
         "A=2 a=1"},
        {"of the spelling that is named", "x/c=1 X/b=2 to/", "mv x/X x/to",
         "'x/X': 'x/c' is spelled otherwise, and stays", "x/c=1 to/X/b=2 to/"},
        {"links", "l=link a/", "mv x/l x/a", "", "a/l=link a/"},
        {"no name that is there twice", kDouble, "mv x/b x/d", "'x/b': several members have this name", kDouble},
    });
}

TEST(ArchiveCommands, TakeMembersOutOrNameThem) {
    Try({
        {"copied, with what no path leads to named", kDouble, "cp -r x/ o",
         "'x/': its member 'b' is left out: another one has that name, or it is no name for a file", kDouble, "old=O",
         "b=B d/c=C o/a=1 o/b=2 o/c=4"},
        {"moved, but no folder that is not complete", "d/a=1 d/\xFF=2 e=3", "mv x/d x/e d",
         "'x/d': its member 'd/\xFF' is left out: another one has that name, or it is no name for a file",
         "d/a=1 d/\xFF=2", "old=O", "b=B d/c=C d/d/a=1 d/e=3"},
        {"what lies below a file", kBelow, "cp -r x/f o", "'x/f': what lies below it is left out, since it is a file",
         kBelow, "old=O", "b=B d/c=C o=1"},
        {"even what no path leads to", "f=1 f/\xFF=2", "mv x/f y",
         "'x/f': what lies below it is left out, since it is a file", "f=1 f/\xFF=2", "old=O f=1"},
        {"no links", "a/l=link a/b=1", "mv x/a o", "'x/a/l': is a link and is left out", "a/l=link a/b=1", "old=O",
         "b=B d/c=C o/b=1"},
        {"no bits that change the user", "s=set-id", "cp x/s o", "", "s=set-id", "old=O", "b=B d/c=C o=set-id"},
        {"a member of two spellings", "a/b=1 A/c=2 d=3", "mv x/a o", "", "d=3", "old=O", "b=B d/c=C o/b=1 o/c=2"},
        {"into another archive, as they are", "l=link s=secret a/b=1", "mv x/l x/s x/a y", "", "",
         "old=O l=link s=secret a/b=1"},
        {"nothing when the other archive fails", "a=1", "mv x/a y/old/a", "'y/old/a': is no folder and no archive",
         "a=1"},
    });
}

}  // namespace ZEMA::testing
