// The storage commands as processes: what they do, what they say, and what is left when they fail.

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
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

// A folder with an archive "x.wqf", an archive "y" in which another one lies, one with two members of one name, one
// that imports when it was mended, and a few files.
class Scene {
public:
    Scene() {
        const std::string inner = ArchiveBuilder().Stored("deep.txt", "DEEP").Bytes();
        folder_.Write("x.wqf", Archive());
        folder_.Write("y", ArchiveBuilder().Stored("inner.zip", inner).Bytes());
        folder_.Write(".twins", ArchiveBuilder()
                                    .Stored("twin", "1")
                                    .Stored("twin", "2")
                                    .Stored("other", "3")
                                    .Stored("other/x", "")
                                    .Bytes());
        folder_.Write(".torn", ArchiveBuilder()
                                   .Add({.name = "IMAGE100.WQFML",
                                         .contents = "<WQFML versionMajor='5'><Bricks/></WQFML>",
                                         .sums = ArchiveMember::Sums::Both})
                                   .Bytes());
        folder_.Write("b.txt", "B");
        fs::create_directories(folder_.Path() / "tree/empty");
        folder_.Write("tree/t.txt", "T");
        fs::create_symlink("b.txt", folder_ / "link");
        fs::create_symlink("x.wqf", folder_ / "xlink");
    }

    // "dir/sub" has no entry of its own; "r.txt" is write-protected.
    static std::string Archive() {
        return ArchiveBuilder()
            .Stored("a.txt", "A")
            .Folder("dir/")
            .Deflated("dir/sub/s.txt", "SSSSSS")
            .Add({.name = "r.txt", .contents = "R", .externalAttributes = 0100444u << 16})
            .Bytes();
    }

    Result Run(const std::string& line) const { return Shell("cd '" + folder_.Path().string() + "' && " + line); }

    // All that a line prints, messages too.
    std::string Printed(const std::string& line) const { return Run("exec 2>&1; " + line).out; }
    const TemporaryFolder& Folder() const { return folder_; }

    // Lets a command meet an error in one of its calls of the system, or a signal if that is not 0.
    Result RunFailing(const std::string& call, int number, int signal, const std::string& command,
                      int error = EIO) const {
        return Run("ASAN_OPTIONS=$ASAN_OPTIONS:verify_asan_link_order=0 LD_PRELOAD=" ZEMA_FAILING_CALLS " FAIL_CALL=" +
                   call + " FAIL_NUMBER=" + std::to_string(number) + " FAIL_SIGNAL=" + std::to_string(signal) +
                   " FAIL_ERROR=" + std::to_string(error) + " $WQF " + command + "; exit $?");
    }

    // All names, and the bytes of all files but huge ones.
    std::string State() const {
        return Run("find . -type f -size -9M -print0 | sort -z | xargs -0 cksum; find . | sort").out;
    }

private:
    TemporaryFolder folder_;
};

struct Row {
    const char* what;
    const char* line;
    const char* printed;
};

// Each line in a folder of its own.
void Try(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const Scene scene;
        EXPECT_EQ(scene.Printed(row.line), row.printed);
        EXPECT_NO_THROW(ReadStrictly(scene.Folder().Read("x.wqf")));
    }
}

}  // namespace

TEST(WqfStorage, CopiesInEveryDirection) {
    Try({
        {"a file into an archive", "$WQF cp b.txt x.wqf; $WQF cat x.wqf/b.txt x.wqf/a.txt", "BA"},
        {"a member out", "$WQF cp x.wqf/DIR/sub/S.TXT .; cat s.txt", "SSSSSS"},
        {"a folder into an archive", "$WQF cp -r tree x.wqf; $WQF ls -R x.wqf/tree", "empty\nt.txt\n"},
        {"the whole archive out", "$WQF cp -r x.wqf/ out; ls out out/dir/sub",
         "out:\na.txt\ndir\nr.txt\n\nout/dir/sub:\ns.txt\n"},
        {"between archives and within",
         "$WQF new n; $WQF cp -r x.wqf/dir y/inner.zip n/; $WQF cp -r n/dir n/e; $WQF ls -R n",
         "dir\ndir/sub\ndir/sub/s.txt\ne\ne/sub\ne/sub/s.txt\ninner.zip\n"},
        {"out of an archive in an archive",
         "$WQF cp y/inner.zip/deep.txt .; cat deep.txt; $WQF cp -r y/inner.zip/ tree; $WQF ls tree/inner.zip",
         "DEEPdeep.txt\n"},
        {"an archive as a file, into another one", "$WQF cp x.wqf y; $WQF cat y/x.wqf | cmp - x.wqf; $WQF ls y",
         "inner.zip\nx.wqf\n"},
        {"a file whose size the system does not say",
         "$WQF cp /proc/version x.wqf; $WQF cat x.wqf/version | cmp - /proc/version", ""},
        {"into a link to an archive", "$WQF cp b.txt xlink/; $WQF cat x.wqf/b.txt; readlink xlink", "Bx.wqf\n"},
        {"-n leaves what is there, and sources of moves",
         "$WQF cp -n b.txt x.wqf/a.txt; $WQF cp -n x.wqf/a.txt b.txt; $WQF mv -n b.txt x.wqf/a.txt; cat b.txt; "
         "$WQF cat x.wqf/a.txt",
         "BA"},
        {"-f over what is protected", "$WQF cp -f b.txt x.wqf/r.txt; $WQF cat x.wqf/r.txt", "B"},
        {"moving in", "$WQF mv tree b.txt x.wqf; ls; $WQF ls -R x.wqf/tree", "link\nx.wqf\nxlink\ny\nempty\nt.txt\n"},
        {"moving out", "$WQF mv x.wqf/dir .; cat dir/sub/s.txt; $WQF ls x.wqf", "SSSSSSa.txt\nr.txt\n"},
        {"moving over a link that leads nowhere", "ln -s none l; $WQF mv x.wqf/a.txt l; cat l; ls",
         "Ab.txt\nl\nlink\ntree\nx.wqf\nxlink\ny\n"},
        {"removing", "$WQF rm -r x.wqf/dir x.wqf/a.txt; $WQF rm -f x.wqf/r.txt x.wqf/none none; $WQF ls x.wqf/", ""},
        {"making folders",
         "$WQF mkdir x.wqf/m x.wqf/M/k; $WQF mkdir -p x.wqf/n/o x.wqf/dir; $WQF ls -R x.wqf/n; $WQF ls x.wqf/m",
         "o\nk\n"},
        {"what can be copied is, when something else cannot", "$WQF cp b.txt none x.wqf; $WQF cat x.wqf/b.txt",
         "wqf: cannot copy 'none': no such file\nB"},
        {"links below a folder stay, and the folder when it is moved",
         "ln -s t.txt tree/l; $WQF mv tree x.wqf; $WQF ls x.wqf/tree; ls tree",
         "wqf: cannot move 'tree/l': is a link and is left out\nempty\nt.txt\nempty\nl\nt.txt\n"},
        {"waiting", "flock x.wqf sleep 1.3 & sleep 0.1; $WQF mkdir x.wqf/q",
         "wqf: 'x.wqf' is in use; waiting for it\n"},
        {"what killed commands left goes, and nothing else",
         "M=wqf-edit-0123456789abcdef0123456789abcde; touch .x.wqf-edit-backup .y.$M .y.${M}g .y.${M}00 .dead.${M}a "
         ".${M}b .used.${M}0; ln -s x.wqf .z.${M}1; mkfifo .p.${M}2; flock .used.${M}0 $WQF mkdir x.wqf/q; "
         "ls -A | sed -n s/$M/M/p; ls -A | grep backup",
         ".p.M2\n.used.M0\n.y.M\n.y.M00\n.y.Mg\n.z.M1\n.x.wqf-edit-backup\n"},
        {"mending what is torn, and nothing else",
         "$WQF import .torn >out 2>&1; $WQF mend --dry-run x.wqf .torn; $WQF mend none .torn || echo $?; "
         "$WQF import .torn >out && echo imports",
         ".torn: would be rewritten: 'IMAGE100.WQFML' in it: it has its sizes beside flag bit 3\n"
         "wqf: cannot mend 'none': no such file\n"
         ".torn: rewritten: 'IMAGE100.WQFML' in it: it has its sizes beside flag bit 3\n1\nimports\n"},
        {"one archive by two names", "ln x.wqf hard; $WQF rm -f hard/a.txt x.wqf/r.txt; $WQF ls hard",
         "wqf: cannot remove 'x.wqf': the command names the same file by another name too\ndir\nr.txt\n"},
        {"into a pipe that nobody reads",
         "{ $WQF ls $(yes x.wqf/a.txt | head -n 9000); echo $? >status; } | head -n 1; cat status",
         "x.wqf/a.txt\n141\n"},
    });
}

// And nothing lies beside what is as it was. No file may become larger than 100 KiB.
TEST(WqfStorage, SaysWhyItChangesNothing) {
    const Scene scene;
    scene.Run(
        "mkdir -p a.txt twins d; cp x.wqf tree; cp x.wqf d/a.txt; head -c 60 x.wqf >cut; cp cut d/r.txt; cp x.wqf "
        "locked; chmod 444 locked; touch twins/t.txt twins/T.txt; touch tree/B.TXT b.txt.zip $(printf 'n\\377'); "
        "truncate -s 4G large; cp y twin; ln twin twin2; ln -s tree t; ln -s loop loop; ln -s none dangling");
    std::string path = "end";
    ArchiveBuilder full;
    for (int i = 0; i < 65535; ++i) full.Stored(std::to_string(i), "");
    for (int depth = 0; depth < 3000; ++depth) path.insert(0, "a/");
    BuiltArchive damaged = ArchiveBuilder().Stored("ok", "OK").Stored("bad", "BAD").Build();
    damaged.bytes[damaged.bytes.find("BAD")] = 'b';
    scene.Folder().Write("damaged", damaged.bytes);
    scene.Folder().Write("junk", NoiseBytes(300000));
    scene.Folder().Write("big", ArchiveBuilder().Stored("junk", NoiseBytes(300000)).Bytes());
    scene.Folder().Write("full", full.Bytes());
    scene.Folder().Write("deep", ArchiveBuilder().Stored(path, "").Bytes());
    const struct {
        const char* command;
        const char* message;
    } rows[] = {
        {"cp x.wqf tree", "copy 'x.wqf': neither it nor 'tree' lies in an archive; use cp"},
        {"rm -rf x.wqf", "remove 'x.wqf': it does not lie in an archive; use rm"},
        {"rm -rf x.wqf/", "remove 'x.wqf/': is a whole archive; use rm"},
        {"mkdir -p p/q", "make 'p/q': it does not lie in an archive; use mkdir"},
        {"cp -f x.wqf/a.txt d", "copy 'x.wqf/a.txt': 'd/a.txt' is an archive, and no archive is replaced"},
        {"cp -f x.wqf/r.txt d", "copy 'x.wqf/r.txt': 'd/r.txt': it was cut short: its directory is missing"},
        {"mv -f x.wqf/a.txt cut", "move 'cut': it was cut short: its directory is missing"},
        {"ls cut", "list 'cut': it was cut short: its directory is missing"},
        {"cp tree x.wqf", "copy 'tree': is a folder (-r copies folders)"},
        {"cp x.wqf/a.txt link tree/t.txt", "copy 'tree/t.txt': is no folder, and there are several sources"},
        {"mv tree link none",
         "move 'tree': neither it nor 'none' lies in an archive; use mv\n"
         "wqf: cannot move 'link': neither it nor 'none' lies in an archive; use mv"},
        {"cp b.txt x.wqf/dir/../a.txt/", "copy 'x.wqf/dir/../a.txt/': is no folder and no archive"},
        {"cp -r a.txt x.wqf", "copy 'a.txt': 'x.wqf/a.txt' is there and is no folder"},
        {"cp b.txt x.wqf/r.txt", "copy 'b.txt': 'x.wqf/r.txt' is write-protected (-f replaces it)"},
        {"cp b.txt locked", "copy 'locked': it is write-protected; --force edits it all the same"},
        {"cp b.txt none/b.txt", "copy 'none/b.txt': no such file"},
        {"cp b.txt x.wqf/none/", "copy 'b.txt': 'x.wqf/none/' is no folder"},
        {"cp link/ c", "copy 'link/': is no folder and no archive"},
        {"cp x.wqf/a.txt dangling", "copy 'x.wqf/a.txt': 'dangling' is a link that leads nowhere"},
        {"cp x.wqf/a.txt x.wqf/A.txt", "copy 'x.wqf/a.txt': is the same file as 'x.wqf/A.txt'"},
        {"cp x.wqf/a.txt /dev/null", "copy 'x.wqf/a.txt': '/dev/null' is there and is no file"},
        {"cp n* x.wqf", "copy 'n\xEF\xBF\xBD': its name is not UTF-8, and cannot stand in an archive"},
        {"mv y/inner.zip/deep.txt .", "move 'y/inner.zip/deep.txt': an archive in an archive can only be read"},
        {"rm y/inner.zip/deep.txt", "remove 'y/inner.zip/deep.txt': an archive in an archive can only be read"},
        {"rm twin/a", "remove 'twin': it has several names (hard links), which would part; --force lets them"},
        {"rm x.wqf/r.txt", "remove 'x.wqf/r.txt': it is write-protected (-f removes it)"},
        {"rm -f loop/x", "remove 'loop/x': too many levels of symbolic links"},
        {"ls 'x.wqf/*.png'", "list 'x.wqf/*.png': no such file"},
        {"new b.txt", "make 'b.txt': it is there already"},
        {"new x.wqf/n.zip", "make 'x.wqf/n.zip': an archive is not made in another one ('wqf cp' puts it there)"},
        {"mkdir x.wqf/dir/sub", "make 'x.wqf/dir/sub': it is there already"},
        {"cp -r tree tree/x.wqf", "copy 'tree': a folder does not go into itself"},
        {"mv x.wqf/dir x.wqf/DIR/sub", "move 'x.wqf/dir': a folder does not go into itself"},
        {"cp xlink x.wqf/", "copy 'xlink': an archive does not go into itself"},
        {"mv x.wqf/ new", "move 'x.wqf/': is a whole archive; name it without '/'"},
        {"cp b.txt tree/B.TXT x.wqf",
         "copy 'x.wqf/B.TXT': two of the sources would go there (names that differ only in case are the same)"},
        {"cp -r twins x.wqf",
         "copy 'x.wqf/twins/t.txt': two of the sources would go there (names that differ only in case are the same)"},
        {"mv b.txt.zip b.txt x.wqf",
         "move 'x.wqf/b.txt': 'x.wqf/b.txt.zip' would stand beside it, and the two cannot be told apart"},
        {"cp b.txt large x.wqf", "copy 'large': it is too large for an archive"},
        {"cp b.txt full", "copy 'full': it would have 65536 members, and 65535 is the most"},
        {"cp big/junk copy", "copy 'big/junk': 'copy': file too large"},
        {"cp b.txt junk x.wqf", "copy 'x.wqf': file too large"},
        {"mv damaged/bad .", "move 'damaged/bad': it is damaged: its checksum is wrong"},
        {"cp -r deep/ new", "copy 'deep/': a path would be longer than 4095 bytes"},
    };
    const std::string before = scene.State();
    for (const auto& row : rows) {
        const Result result = scene.Run(std::string("ulimit -f 200; $WQF ") + row.command);
        EXPECT_EQ(result.err, std::string("wqf: cannot ") + row.message + "\n") << row.command;
        EXPECT_EQ(result.exit, 1);
    }
    EXPECT_EQ(scene.State(), before);
}

TEST(WqfStorage, ListsInEveryForm) {
    Try({
        {"columns", "TZ=UTC touch -d '2024-05-06 07:08' b.txt; chmod 644 b.txt; TZ=UTC $WQF ls -l b.txt",
         "-rwe--            1 2024-05-06 07:08 b.txt\n"},
        {"what archives do not know", "$WQF ls -lR x.wqf/dir",
         "d-----            0 -                sub\n-rw---            6 -                sub/s.txt\n"},
        {"patterns", "$WQF ls 'x.wqf/*.TXT' '*k'", "x.wqf/a.txt\nx.wqf/r.txt\nlink\nxlink\n"},
        {"what no path leads to", "$WQF ls .twins",
         "wqf: cannot list '.twins': no path leads to its member 'twin': another one has that name, or it is no name "
         "for a file\nwqf: cannot list '.twins': no path leads to its member 'other/x': what it lies below is a file\n"
         "other\ntwin\n"},
        {"several folders", "$WQF ls x.wqf/dir y/", "x.wqf/dir:\nsub\n\ny/:\ninner.zip\n"},
        {"objects", "$WQF ls --format json x.wqf/r.txt",
         R"([{"path":"x.wqf/r.txt","name":"r.txt","type":"file","size":1,"flags":"-r----","modified":null}])"
         "\n"},
        {"lines", "TZ=UTC touch -d '2024-05-06 07:08:09' b.txt; chmod 644 b.txt; TZ=EST5 $WQF ls --format ndjson 'b*'",
         R"({"path":"b.txt","name":"b.txt","type":"file","size":1,"flags":"-rwe--","modified":"2024-05-06T07:08:09Z"})"
         "\n"},
    });
}

// What is known of a file goes with it.
TEST(WqfStorage, KeepsPermissionsTimesAndLinks) {
    Try({
        {"an archive's", "chmod 640 x.wqf; $WQF cp b.txt xlink/; stat -c %a x.wqf; readlink xlink", "640\nx.wqf\n"},
        {"those of what a link leads to",
         "chmod 755 b.txt; $WQF cp x.wqf/a.txt link; readlink link; cat b.txt; stat -c %a b.txt", "b.txt\nA755\n"},
        {"what comes out of an archive, as far as the user lets it",
         "umask 077; TZ=UTC $WQF cp -r x.wqf/dir x.wqf/r.txt .; stat -c %a dir dir/sub r.txt; date -ur r.txt +%F",
         "700\n700\n400\n2024-01-01\n"},
        {"what goes into an archive and comes back, but for the bits that change the user",
         "touch -d @1700000001 b.txt; chmod 6754 b.txt; umask 022; $WQF cp b.txt x.wqf; $WQF mv x.wqf/b.txt c; "
         "stat -c '%Y %a' c",
         "1700000001 754\n"},
        {"dates, as far as archives can tell them",
         "for d in 1970-02-03 2200-01-01; do touch -d $d b.txt; $WQF cp b.txt x.wqf; $WQF cp x.wqf/b.txt c; "
         "date -r c +%F; done",
         "1980-01-01\n2107-12-31\n"},
        {"extended attributes, where the file system has them",
         "x() { python3 -c \"import os; $1\" 2>/dev/null; }; x 'os.setxattr(\"x.wqf\", \"user.note\", b\"kept\")' || "
         "exit; "
         "$WQF mkdir x.wqf/q; x 'os.getxattr(\"x.wqf\", \"user.note\")' || echo lost",
         ""},
    });
}

// Each call that touches files fails once, until the command makes no more of them.
TEST(WqfStorage, LeavesTheOldArchiveWhicheverCallFails) {
    const Scene scene;
    const std::string names = scene.Run("ls -A").out;
    for (const char* command : {"mv b.txt x.wqf", "mv x.wqf/a.txt x.wqf/dir", "rm -r x.wqf/dir", "mkdir x.wqf/q"}) {
        for (const std::string call : {"pread", "pwrite", "fchmod", "fsync", "rename"}) {
            int number = 1;
            // Whether the folder's new entry is on the disk is asked when all is in place.
            for (; number < 100 && (call != "fsync" || number == 1); ++number) {
                SCOPED_TRACE(command + (" " + call) + " " + std::to_string(number));
                const Result result = scene.RunFailing(call, number, 0, command);
                if (result.exit == 0) break;
                EXPECT_NE(result.err, "");
                EXPECT_EQ(scene.Folder().Read("x.wqf"), Scene::Archive());
                EXPECT_EQ(scene.Run("ls -A").out, names);
            }
            EXPECT_GT(number, 1) << call << " does not fail";
            scene.Folder().Write("x.wqf", Scene::Archive());
            scene.Folder().Write("b.txt", "B");
        }
    }
}

// Whoever is killed leaves something behind, until the next command works in that folder; who is interrupted does not.
TEST(WqfStorage, LeavesTheOldArchiveWhenASignalEndsIt) {
    const Scene scene;
    const std::string before = scene.State();
    int leftovers = 0;
    const struct {
        const char* command;
        const char* next;
    } rows[] = {
        {"mv b.txt x.wqf", "$WQF mkdir x.wqf/q; $WQF rm -r x.wqf/q"},
        {"rm -r x.wqf/dir", "$WQF mkdir x.wqf/q; $WQF rm -r x.wqf/q"},
        {"cp x.wqf/dir/sub/s.txt out", "$WQF cp x.wqf/a.txt out2; rm out2"},
    };
    for (const auto& row : rows) {
        for (const char* call : {"pwrite", "fchmod", "rename"}) {
            SCOPED_TRACE(row.command + (" " + std::string(call)));
            EXPECT_EQ(scene.RunFailing(call, 1, SIGTERM, row.command).exit, 128 + SIGTERM);
            EXPECT_EQ(scene.State(), before);
            EXPECT_EQ(scene.RunFailing(call, 1, SIGKILL, row.command).exit, 128 + SIGKILL);
            EXPECT_EQ(scene.Run("cat b.txt; $WQF ls x.wqf/dir").out, "Bsub\n");
            leftovers += scene.Run("ls -A | grep wqf-edit-").out.empty() ? 0 : 1;
            scene.Run(row.next);
            EXPECT_EQ(scene.State(), before);
        }
    }
    EXPECT_GT(leftovers, 5);
}

// Nobody can tell there whether a leftover is in use.
TEST(WqfStorage, WorksOnFileSystemsWithoutLocks) {
    const Scene scene;
    const std::string leftover = scene.Folder().Write(".x.wqf-edit-0123456789abcdef0123456789abcdef", "");
    for (const int error : {ENOLCK, ENOSYS, EOPNOTSUPP, EIO}) {
        const std::string command = "mkdir x.wqf/q" + std::to_string(error);
        EXPECT_EQ(scene.RunFailing("flock", 0, 0, command, error).exit, error == EIO ? 1 : 0) << error;
    }
    EXPECT_EQ(scene.Run("$WQF ls 'x.wqf/q*' | wc -l").out, "3\n");
    EXPECT_TRUE(fs::exists(leftover));
}

TEST(WqfStorage, EditsByOneCommandAtATime) {
    const Scene scene;
    const Result result = scene.Run("for i in 1 2 3 4 5 6; do echo $i >f$i; $WQF cp f$i x.wqf & done; wait");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(scene.Run("$WQF ls 'x.wqf/f*' | wc -l").out, "6\n");
    EXPECT_EQ(ToolsThatRefuse(scene.Folder() / "x.wqf"), std::vector<std::string>());
}

}  // namespace ZEMA::testing
