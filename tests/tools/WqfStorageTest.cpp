// The storage commands as processes: what they do, what they say, and what is left when they fail.

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "tests/support/ArchiveBuilder.h"
#include "tests/support/ArchiveTools.h"
#include "tests/support/StrictArchive.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Process.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

ArchiveMember Member(const std::string& name, const std::string& contents) {
    ArchiveMember member;
    member.name = name;
    member.contents = contents;
    return member;
}

// A folder with an archive "x.wqf", an archive "y" in which another one lies, and a few files.
class Scene {
public:
    Scene() {
        const std::string inner = ArchiveBuilder().Stored("deep.txt", "DEEP").Bytes();
        folder_.Write("x.wqf", Archive());
        folder_.Write("y", ArchiveBuilder().Stored("inner.zip", inner).Bytes());
        folder_.Write("b.txt", "B");
        fs::create_directories(folder_.Path() / "tree/empty");
        folder_.Write("tree/t.txt", "T");
        fs::create_symlink("b.txt", folder_ / "link");
        fs::create_symlink("x.wqf", folder_ / "xlink");
    }

    // "dir/sub" has no entry of its own; "r.txt" is write-protected.
    static std::string Archive() {
        ArchiveMember guarded = Member("r.txt", "R");
        guarded.externalAttributes = 0100444u << 16;
        return ArchiveBuilder()
            .Stored("a.txt", "A")
            .Folder("dir/")
            .Deflated("dir/sub/s.txt", "SSSSSS")
            .Add(guarded)
            .Bytes();
    }

    Result Run(const std::string& line) const { return Shell("cd '" + folder_.Path().string() + "' && " + line); }
    const TemporaryFolder& Folder() const { return folder_; }

    // All names, and the bytes of all files but huge ones.
    std::string State() const { return Run("find . -type f -size -9M | sort | xargs cksum; find . | sort").out; }

private:
    TemporaryFolder folder_;
};

struct Row {
    const char* what;
    const char* command;
    const char* messages;  // empty: it succeeds
    const char* look;      // a command
    const char* seen;      // what it prints
};

void Try(const Row& row) {
    SCOPED_TRACE(row.what);
    const Scene scene;
    const Result result = scene.Run(row.command);
    EXPECT_EQ(result.err, row.messages);
    EXPECT_EQ(result.exit, *row.messages == '\0' ? 0 : 1);
    EXPECT_EQ(scene.Run(row.look).out, row.seen);
    EXPECT_FALSE(ReadStrictly(scene.Folder().Read("x.wqf")).empty());
}

}  // namespace

TEST(WqfStorage, CopiesInEveryDirection) {
    const Row rows[] = {
        {"a file into an archive", "$WQF cp b.txt x.wqf", "", "$WQF cat x.wqf/b.txt x.wqf/a.txt", "BA"},
        {"under another name", "$WQF cp b.txt x.wqf/dir/c.txt", "", "$WQF ls -R x.wqf/dir", "c.txt\nsub\nsub/s.txt\n"},
        {"a member out", "$WQF cp x.wqf/DIR/sub/S.TXT .", "", "cat s.txt", "SSSSSS"},
        {"a folder into an archive", "$WQF cp -r tree x.wqf", "", "$WQF ls -R x.wqf/tree", "empty\nt.txt\n"},
        {"a folder out, without an entry of its own", "$WQF cp -r x.wqf/dir/sub out", "", "cat out/s.txt", "SSSSSS"},
        {"the whole archive out", "$WQF cp -r x.wqf/ out", "", "ls out out/dir/sub",
         "out:\na.txt\ndir\nr.txt\n\nout/dir/sub:\ns.txt\n"},
        {"between archives", "$WQF new n && $WQF cp x.wqf/a.txt y/inner.zip n/", "", "$WQF ls n; $WQF cat n/a.txt",
         "a.txt\ninner.zip\nA"},
        {"within an archive", "$WQF cp -r x.wqf/dir x.wqf/twin", "", "$WQF cat x.wqf/twin/sub/s.txt", "SSSSSS"},
        {"out of an archive in an archive", "$WQF cp y/inner.zip/deep.txt .", "", "cat deep.txt; $WQF ls y/inner.zip",
         "DEEPdeep.txt\n"},
        {"an archive as a file", "mkdir d && $WQF cp x.wqf d", "", "cmp x.wqf d/x.wqf && ls d", "x.wqf\n"},
        {"an archive over another one", "cp y z && $WQF cp x.wqf z", "", "cmp x.wqf z && echo same", "same\n"},
        {"outside of archives", "$WQF cp -r tree b.txt x.wqf/dir", "", "$WQF ls x.wqf/dir", "b.txt\nsub\ntree\n"},
        {"the contents of a folder", "mkdir d && $WQF cp -r tree/. d", "", "ls d", "empty\nt.txt\n"},
        {"over a file", "$WQF cp b.txt x.wqf/A.TXT", "", "$WQF ls x.wqf; $WQF cat x.wqf/a.txt", "a.txt\ndir\nr.txt\nB"},
        {"into a link to an archive", "$WQF cp b.txt xlink/", "", "$WQF cat x.wqf/b.txt; readlink xlink", "Bx.wqf\n"},
        {"-n leaves what is there", "$WQF cp -n b.txt x.wqf/a.txt && $WQF cp -n x.wqf/a.txt b.txt", "",
         "cat b.txt; $WQF cat x.wqf/a.txt", "BA"},
        {"-f over what is protected", "$WQF cp -f b.txt x.wqf/r.txt", "", "$WQF cat x.wqf/r.txt", "B"},
        {"moving in", "$WQF mv tree b.txt x.wqf", "", "ls; $WQF ls -R x.wqf/tree",
         "link\nx.wqf\nxlink\ny\nempty\nt.txt\n"},
        {"moving out", "$WQF mv x.wqf/dir .", "", "cat dir/sub/s.txt; $WQF ls x.wqf", "SSSSSSa.txt\nr.txt\n"},
        {"moving within", "$WQF mv x.wqf/a.txt x.wqf/dir", "", "$WQF ls -R x.wqf",
         "dir\ndir/a.txt\ndir/sub\ndir/sub/s.txt\nr.txt\n"},
        {"moving outside", "$WQF mv tree link d 2>/dev/null || $WQF mv tree d", "", "ls d", "empty\nt.txt\n"},
        {"-n does not remove the source", "$WQF mv -n b.txt x.wqf/a.txt", "", "cat b.txt; $WQF cat x.wqf/a.txt", "BA"},
        {"removing", "$WQF rm -r x.wqf/dir x.wqf/a.txt tree link", "", "ls; $WQF ls -R x.wqf",
         "b.txt\nx.wqf\nxlink\ny\nr.txt\n"},
        {"removing with force", "$WQF rm -f x.wqf/r.txt nothing", "", "$WQF ls x.wqf", "a.txt\ndir\n"},
        {"making folders", "$WQF mkdir x.wqf/m && $WQF mkdir -p x.wqf/n/o p/q x.wqf/dir", "",
         "$WQF ls -R x.wqf/n; ls p", "o\nq\n"},
    };
    for (const Row& row : rows) Try(row);
}

TEST(WqfStorage, SaysWhatItCannotDo) {
    const Row rows[] = {
        {"one of several sources is missing", "$WQF cp b.txt none x.wqf", "wqf: cannot copy 'none': no such file\n",
         "$WQF cat x.wqf/b.txt", "B"},
        {"a folder without -r", "$WQF cp tree x.wqf", "wqf: cannot copy 'tree': is a folder (-r copies folders)\n",
         "$WQF ls x.wqf", "a.txt\ndir\nr.txt\n"},
        {"several sources for a file", "$WQF cp b.txt link tree/t.txt",
         "wqf: cannot copy 'tree/t.txt': is no folder, and there are several sources\n", "cat tree/t.txt", "T"},
        {"a file over a folder", "$WQF cp b.txt x.wqf/dir/sub/../../dir/sub/s.txt/",
         "wqf: cannot copy 'x.wqf/dir/sub/../../dir/sub/s.txt/': is no folder and no archive\n",
         "$WQF cat x.wqf/dir/sub/s.txt", "SSSSSS"},
        {"a folder over a file", "mkdir a.txt && $WQF cp -r a.txt x.wqf",
         "wqf: cannot copy 'a.txt': 'x.wqf/a.txt' is there and is no folder\n", "$WQF cat x.wqf/a.txt", "A"},
        {"a write-protected file", "$WQF cp b.txt x.wqf/r.txt",
         "wqf: cannot copy 'b.txt': 'x.wqf/r.txt' is write-protected (-f replaces it)\n", "$WQF cat x.wqf/r.txt", "R"},
        {"a write-protected archive", "chmod 444 x.wqf; $WQF cp b.txt x.wqf",
         "wqf: cannot copy 'x.wqf': it is write-protected\n", "$WQF ls x.wqf", "a.txt\ndir\nr.txt\n"},
        {"links below a folder", "ln -s t.txt tree/l; $WQF cp -r tree x.wqf",
         "wqf: cannot copy 'tree/l': is a link and is left out\n", "$WQF ls x.wqf/tree", "empty\nt.txt\n"},
        {"a folder with a link is not moved away", "ln -s t.txt tree/l; $WQF mv tree x.wqf",
         "wqf: cannot move 'tree/l': is a link and is left out\n", "ls tree", "empty\nl\nt.txt\n"},
        {"into a folder that is missing", "$WQF cp b.txt none/b.txt", "wqf: cannot copy 'none/b.txt': no such file\n",
         "ls b.txt", "b.txt\n"},
        {"as a folder that is missing", "$WQF cp b.txt none/", "wqf: cannot copy 'b.txt': 'none/' is no folder\n",
         "ls b.txt", "b.txt\n"},
        {"onto itself", "$WQF cp x.wqf/a.txt x.wqf/A.txt",
         "wqf: cannot copy 'x.wqf/a.txt': is the same file as 'x.wqf/A.txt'\n", "$WQF cat x.wqf/a.txt", "A"},
        {"onto a device", "$WQF cp x.wqf/a.txt /dev/null",
         "wqf: cannot copy 'x.wqf/a.txt': '/dev/null' is there and is no file\n", "stat -c %F /dev/null",
         "character special file\n"},
        {"a name that is not UTF-8", "printf N >$(printf 'n\\377'); $WQF cp n* x.wqf",
         "wqf: cannot copy 'n\xEF\xBF\xBD': its name is not UTF-8, and cannot stand in an archive\n", "$WQF ls x.wqf",
         "a.txt\ndir\nr.txt\n"},
        {"moving over a folder that is not empty", "mkdir -p d/tree/u; $WQF mv tree d",
         "wqf: cannot move 'tree': 'd/tree': directory not empty\n", "ls tree d/tree", "d/tree:\nu\n\ntree:\nempty\nt.txt\n"},
        {"removing what is missing", "$WQF rm none x.wqf/none",
         "wqf: cannot remove 'none': no such file\nwqf: cannot remove 'x.wqf/none': no such file\n", "$WQF ls x.wqf",
         "a.txt\ndir\nr.txt\n"},
        {"removing a folder without -r", "$WQF rm x.wqf/dir",
         "wqf: cannot remove 'x.wqf/dir': is a folder (-r removes folders)\n", "$WQF ls x.wqf", "a.txt\ndir\nr.txt\n"},
        {"removing what is protected", "$WQF rm x.wqf/r.txt",
         "wqf: cannot remove 'x.wqf/r.txt': it is write-protected (-f removes it)\n", "$WQF ls x.wqf",
         "a.txt\ndir\nr.txt\n"},
        {"in an archive in an archive", "$WQF rm y/inner.zip/deep.txt",
         "wqf: cannot remove 'y/inner.zip/deep.txt': an archive in an archive can only be read\n",
         "$WQF ls y/inner.zip/", "deep.txt\n"},
        {"behind a file that is no archive", "$WQF cat b.txt/c",
         "wqf: cannot read 'b.txt/c': is no folder and no archive\n", "cat b.txt", "B"},
        {"out of an archive by ..", "$WQF cat x.wqf/../b.txt",
         "wqf: cannot read 'x.wqf/../b.txt': '..' leads out of the archive\n", "cat b.txt", "B"},
        {"a new archive over a file", "$WQF new b.txt", "wqf: cannot make 'b.txt': it is there already\n", "cat b.txt",
         "B"},
        {"a folder that is there", "$WQF mkdir x.wqf/dir/sub",
         "wqf: cannot make 'x.wqf/dir/sub': it is there already\n", "$WQF ls x.wqf/dir/sub", "s.txt\n"},
    };
    for (const Row& row : rows) Try(row);
}

TEST(WqfStorage, RefusesAWholeCommandBeforeAnyChange) {
    const struct {
        const char* what;
        const char* prepare;
        const char* command;
        const char* reason;
    } rows[] = {
        {"a folder into itself", "true", "cp -r b.txt tree tree/empty", "a folder does not go into itself"},
        {"by a link", "ln -s tree t", "cp -r tree t/empty/new", "a folder does not go into itself"},
        {"inside an archive", "true", "mv x.wqf/dir x.wqf/DIR/sub", "a folder does not go into itself"},
        {"into an archive in it", "cp x.wqf tree", "cp -r tree tree/x.wqf", "a folder does not go into itself"},
        {"an archive into itself", "true", "cp xlink x.wqf/", "an archive does not go into itself"},
        {"an archive's root away", "true", "mv x.wqf/ new", "is a whole archive; name it without '/'"},
        {"names that differ in case", "printf C >tree/B.TXT", "cp b.txt tree/B.TXT x.wqf",
         "two of the sources would go there"},
        {"the same below a folder", "printf C >tree/T.txt", "cp -r tree new", "two of the sources would go there"},
        {"x and x.zip", "printf C >b.txt.zip", "mv b.txt.zip b.txt tree", "cannot be told apart"},
        {"a file of 4 GiB", "truncate -s 4G large", "cp b.txt large x.wqf", "it is too large for an archive"},
        {"65,536 members",
         "python3 -c 'import zipfile; z = zipfile.ZipFile(\"full\", \"w\"); [z.writestr(str(i), b\"\") for i in "
         "range(65535)]; z.close()'",
         "cp b.txt full", "it would have 65536 members, and 65535 is the most"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Scene scene;
        scene.Run(row.prepare);
        const std::string before = scene.State();
        const Result result = scene.Run(std::string("$WQF ") + row.command);
        EXPECT_EQ(result.exit, 1);
        EXPECT_NE(result.err.find(row.reason), std::string::npos) << result.err;
        EXPECT_EQ(scene.State(), before);
    }
}

TEST(WqfStorage, ListsInEveryForm) {
    const Scene scene;
    scene.Run("touch -d '2024-05-06 07:08:09 UTC' b.txt; chmod 644 b.txt");
    const struct {
        const char* command;
        const char* seen;
    } rows[] = {
        {"TZ=UTC $WQF ls -l b.txt", "-rwe--            1 2024-05-06 07:08 b.txt\n"},
        {"$WQF ls -lR x.wqf/dir",
         "d-----            0 -                sub\n-rw---            6 -                sub/s.txt\n"},
        {"$WQF ls 'x.wqf/*.TXT' '*k'", "x.wqf/a.txt\nx.wqf/r.txt\nlink\nxlink\n"},
        {"$WQF ls x.wqf/dir y/", "x.wqf/dir:\nsub\n\ny/:\ninner.zip\n"},
        {"$WQF ls --format json x.wqf/r.txt",
         R"([{"path":"x.wqf/r.txt","name":"r.txt","type":"file","size":1,"flags":"-r----","modified":null}])"
         "\n"},
        {"$WQF ls --format ndjson 'b*'",
         R"({"path":"b.txt","name":"b.txt","type":"file","size":1,"flags":"-rwe--","modified":"2024-05-06T07:08:09Z"})"
         "\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(scene.Run(row.command).out, row.seen) << row.command;
    EXPECT_EQ(scene.Run("$WQF ls 'x.wqf/*.png'").err, "wqf: cannot list 'x.wqf/*.png': no such file\n");
    EXPECT_EQ(scene.Run("$WQF cp b.txt").exit, 2);
}

// What is known of a file goes with it; what comes out of an archive is the user's own and new.
TEST(WqfStorage, KeepsPermissionsTimesAndLinks) {
    const Scene scene;
    EXPECT_EQ(scene.Run("chmod 640 x.wqf; $WQF cp b.txt xlink/ && stat -c %a x.wqf; readlink xlink").out,
              "640\nx.wqf\n");
    EXPECT_EQ(scene.Run("touch -d @1000 b.txt; chmod 755 b.txt; $WQF cp b.txt c && stat -c '%Y %a' c").out,
              "1000 755\n");
    EXPECT_EQ(scene.Run("printf Z >z; $WQF cp z link && readlink link; cat b.txt; stat -c %a b.txt").out,
              "b.txt\nZ755\n");
    EXPECT_EQ(scene
                  .Run("umask 077; $WQF cp -r x.wqf/dir x.wqf/r.txt . && stat -c %a dir dir/sub r.txt; "
                       "find r.txt -mmin -5")
                  .out,
              "700\n700\n400\nr.txt\n");
}

// The archive that a fault leaves is the old one, byte for byte, and nothing lies beside it.
TEST(WqfStorage, LosesNothingWhenItFails) {
    const std::string damaged = [] {
        BuiltArchive archive = ArchiveBuilder().Stored("ok", "OK").Stored("bad", "BAD").Build();
        archive.bytes[archive.bytes.find("BAD")] = 'b';
        return archive.bytes;
    }();
    const struct {
        const char* what;
        const char* command;
        const char* reason;
    } rows[] = {
        {"the disk is full", "ulimit -f 1; $WQF cp noise x.wqf", "file too large"},
        {"outside of archives", "ulimit -f 1; $WQF cp noise copy", "file too large"},
        {"a source is damaged", "$WQF cp b.txt damaged/bad x.wqf", "it is damaged: its checksum is wrong"},
        {"a source is damaged, outside of archives", "$WQF cp damaged/bad copy",
         "it is damaged: its checksum is wrong"},
        {"a move fails", "$WQF mv x.wqf/a.txt damaged/bad .", "it is damaged: its checksum is wrong"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Scene scene;
        scene.Folder().Write("noise", NoiseBytes(100000));
        scene.Folder().Write("damaged", damaged);
        const std::string before = scene.Run("ls -A; cksum x.wqf b.txt").out;
        const Result result = scene.Run(row.command);
        EXPECT_EQ(result.exit, 1);
        EXPECT_NE(result.err.find(row.reason), std::string::npos) << result.err;
        if (row.command[5] != 'm') {
            EXPECT_EQ(scene.Run("ls -A; cksum x.wqf b.txt").out, before);
        }
        EXPECT_EQ(ReadStrictly(scene.Folder().Read("x.wqf")).count("dir/sub/s.txt"), 1u);
    }
}

TEST(WqfStorage, LeavesTheOldOrTheNewArchiveWhenKilled) {
    const Scene scene;
    scene.Folder().Write("noise", NoiseBytes(2000000));
    bool leftover = false;
    for (int millisecond = 4; millisecond < 250; millisecond += 20) {
        scene.Folder().Write("x.wqf", Scene::Archive());
        const std::string seconds = std::to_string(millisecond / 1000.0);
        scene.Run("timeout -s KILL " + seconds + " $WQF cp noise x.wqf; true");
        const std::string bytes = scene.Folder().Read("x.wqf");
        if (bytes != Scene::Archive()) {
            EXPECT_EQ(ReadStrictly(bytes).at("noise").size(), 2000000u);
        }
        leftover = leftover || !scene.Run("ls -A | grep '^.x.wqf.wqf-'").out.empty();
    }
    EXPECT_TRUE(leftover) << "no run was killed in the middle";
    EXPECT_EQ(scene.Run("$WQF mkdir x.wqf/new; ls -A | grep wqf-").out, "");
}

// Ctrl-C leaves nothing behind, in the folder of an archive or anywhere else.
TEST(WqfStorage, CleansUpWhenInterrupted) {
    const Scene scene;
    scene.Folder().Write("noise", NoiseBytes(8000000));
    const std::string before = scene.State();
    for (const char* command : {"cp noise x.wqf", "mv noise x.wqf"}) {
        const Result result = scene.Run(std::string("timeout -s INT 0.15 $WQF ") + command);
        EXPECT_EQ(result.exit, 124) << "it ended before it was interrupted";
        EXPECT_EQ(scene.State(), before);
    }
}

TEST(WqfStorage, EditsByOneCommandAtATime) {
    const Scene scene;
    const Result result = scene.Run("for i in 1 2 3 4 5 6; do echo $i >f$i; $WQF cp f$i x.wqf & done; wait");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(scene.Run("$WQF ls 'x.wqf/f*' | wc -l").out, "6\n");
    EXPECT_EQ(ToolsThatRefuse(scene.Folder() / "x.wqf"), std::vector<std::string>());
}

// A last member with a data descriptor of either length must not be cut by what is added behind it.
TEST(WqfStorage, AddsBehindStreamedMembers) {
    using Sums = ArchiveMember::Sums;
    for (const Sums sums : {Sums::Behind, Sums::BehindSigned}) {
        for (const char* contents : {"", "streamed contents"}) {
            const Scene scene;
            ArchiveMember last = Member("last", contents);
            last.deflated = true;
            last.sums = sums;
            scene.Folder().Write("x.wqf", ArchiveBuilder().Stored("a", "A").Add(last).Bytes());
            EXPECT_EQ(scene.Run("$WQF cp b.txt x.wqf").err, "");
            const auto members = ReadStrictly(scene.Folder().Read("x.wqf"));
            EXPECT_EQ(members.at("last"), contents);
            EXPECT_EQ(members.at("b.txt"), "B");
            EXPECT_EQ(ToolsThatRefuse(scene.Folder() / "x.wqf"), std::vector<std::string>());
        }
    }
    ArchiveMember encrypted = Member("last", "S");
    encrypted.sums = Sums::BehindSigned;
    encrypted.flags = 1;
    ArchiveMember twice = Member("last", "S");
    twice.sums = Sums::Both;  // which the format's own rules forbid
    for (const ArchiveMember& last : {encrypted, twice}) {
        const Scene scene;
        const std::string bytes = ArchiveBuilder().Stored("a", "A").Add(last).Bytes();
        scene.Folder().Write("x.wqf", bytes);
        EXPECT_NE(scene.Run("$WQF cp b.txt x.wqf").err.find("data descriptor"), std::string::npos);
        EXPECT_EQ(scene.Folder().Read("x.wqf"), bytes);
    }
}

}  // namespace ZEMA::testing
