#include "host/handlers/RecollSetup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "host/archive/MarkedFile.h"
#include "host/system/FileDescriptor.h"
#include "host/system/Paths.h"

namespace ZEMA {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 24;  // bytes; those that Recoll brings along have some 20,000

constexpr std::string_view kBegin = "# >>> wqf setup recoll";
constexpr std::string_view kEnd = "# <<< wqf setup recoll";
// Behind the first mark, so that a file can be made what it was before.
constexpr std::string_view kNewFile = " (new file)";
constexpr std::string_view kLineEnd = " (and 1 line end above)";
constexpr std::string_view kLineEnds = " (and 2 line ends above)";

// One file of the configuration. A line about an ending holds for all folders only in front of every [section], which
// names one folder there; in the other files a section that comes again goes on.
struct ConfigFile {
    const char* name;
    RecollPlace place;
};
constexpr ConfigFile kFiles[] = {
    {"mimemap", RecollPlace::Front},
    {"mimeconf", RecollPlace::Back},
    {"fields", RecollPlace::Back},
};

// The lines of a text, each with its end.
std::vector<std::string_view> LinesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return lines;
}

std::string_view Trimmed(std::string_view line) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = line.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? "" : line.substr(first, line.find_last_not_of(kBlanks) + 1 - first);
}

bool IsHeading(std::string_view line) {
    return Trimmed(line).starts_with('[');
}

// What is the user's in a file, and what was noted of the file at our mark.
struct OwnText {
    std::string text;
    bool found = false;     // our lines
    std::size_t place = 0;  // where they stood
    bool isNew = false;
};

// Splits a file. An end mark that somebody took away ends nothing, since lines are known as ours one by one.
class Splitter {
public:
    explicit Splitter(const std::string& ours) : ours_(LinesOf(ours)) {}

    OwnText Split(const std::string& file) {
        for (const std::string_view line : LinesOf(file)) {
            if (line.starts_with(kBegin)) {
                Begin(line);
            } else if (inside_ && line.starts_with(kEnd)) {
                inside_ = false;
            } else {
                inside_ ? Inside(line) : Keep(line);
            }
        }
        // The line ends were put there to begin a line of ours; where the user went on below they end the user's line.
        if (own_.found && own_.place == own_.text.size()) own_.text.resize(own_.text.size() - lineEnds_);
        own_.place = std::min(own_.place, own_.text.size());
        return std::move(own_);
    }

private:
    void Begin(std::string_view mark) {
        inside_ = true;
        heading_ = {};
        own_.found = true;
        own_.place = own_.text.size();
        own_.isNew = own_.isNew || mark.find(kNewFile) != std::string_view::npos;
        lineEnds_ = mark.find(kLineEnd) != std::string_view::npos    ? 1
                    : mark.find(kLineEnds) != std::string_view::npos ? 2
                                                                     : 0;
        lineEnds_ = std::min(lineEnds_, own_.text.size());
    }

    void Keep(std::string_view line) { own_.text += line; }

    // Programs that write the configuration put new lines at the end of a section, and that may be ours.
    void Inside(std::string_view line) {
        if (std::any_of(ours_.begin(), ours_.end(), [&](auto& our) { return Trimmed(our) == Trimmed(line); })) {
            if (IsHeading(line)) heading_ = line;
            return;
        }
        if (!IsHeading(line) && !Trimmed(line).empty()) Keep(heading_);
        if (!Trimmed(line).empty()) heading_ = {};
        Keep(line);
        own_.place = own_.text.size();
        lineEnds_ = 0;
    }

    std::vector<std::string_view> ours_;
    OwnText own_;
    bool inside_ = false;
    std::string_view heading_;  // of ours, under which nothing of the user's was seen yet
    std::size_t lineEnds_ = 0;
};

// How many line ends it takes behind a text for a new line to begin: a backslash makes the next line part of the last.
std::size_t MissingLineEnds(std::string_view text) {
    if (text.empty()) return 0;
    const std::size_t missing = text.ends_with('\n') ? 0 : 1;
    if (missing == 0) text.remove_suffix(1);
    return missing + (text.ends_with('\\') ? 1 : 0);
}

}  // namespace

std::string WithRecollLines(const std::optional<std::string>& file, const std::string& lines, RecollPlace place) {
    const OwnText own = file ? Splitter(lines).Split(*file) : OwnText();
    const std::size_t at = own.found ? own.place : place == RecollPlace::Front ? 0 : own.text.size();
    std::string text = own.text.substr(0, at);
    const std::size_t lineEnds = MissingLineEnds(text);
    text.append(lineEnds, '\n').append(kBegin);
    if (!file || own.isNew) text += kNewFile;
    if (lineEnds > 0) text += lineEnds == 1 ? kLineEnd : kLineEnds;
    return text.append("\n").append(lines).append(kEnd).append("\n").append(own.text, at);
}

std::optional<std::string> WithoutRecollLines(const std::optional<std::string>& file, const std::string& lines) {
    if (!file) return std::nullopt;
    const OwnText own = Splitter(lines).Split(*file);
    if (!own.found) return file;
    return own.isNew && own.text.empty() ? std::nullopt : std::optional(own.text);
}

namespace {

// A file of the configuration as it is and as it shall be.
struct Change {
    std::string path;
    std::optional<std::string> before;
    std::optional<std::string> after;
};

Result<std::optional<std::string>> ReadIfThere(const std::string& path) {
    const Result<std::string> text = ReadRegularFile(path, kLargestFile);
    if (text) return std::optional(*text);
    if (text.Why().kind == FailureKind::Missing) return std::optional<std::string>();
    return text.Why().In(path);
}

// The values that fields store lie in slots with numbers, "name = NUMBER; ..." under [values].
std::vector<std::pair<std::string_view, std::string_view>> SlotsIn(std::string_view fields) {
    std::vector<std::pair<std::string_view, std::string_view>> slots;
    bool values = false;
    for (const std::string_view line : LinesOf(fields)) {
        const std::size_t equals = line.find('=');
        if (IsHeading(line)) {
            values = Trimmed(line) == "[values]";
        } else if (values && equals != std::string_view::npos && !Trimmed(line).starts_with('#')) {
            const std::string_view slot = line.substr(equals + 1);
            slots.emplace_back(Trimmed(line.substr(0, equals)), Trimmed(slot.substr(0, slot.find(';'))));
        }
    }
    return slots;
}

// Two fields in one slot would be found by each other's numbers.
Failure CheckSlots(const Change& change, const std::string& lines) {
    const std::string own = WithoutRecollLines(change.before, lines).value_or("");
    for (const auto& [ourName, ourSlot] : SlotsIn(lines)) {
        for (const auto& [name, slot] : SlotsIn(own)) {
            if (slot == ourSlot && name != ourName) {
                return {FailureKind::Refused, change.path + ": the field '" + std::string(name) + "' has the slot " +
                                                  std::string(slot) + ", which '" + std::string(ourName) + "' needs"};
            }
        }
    }
    return {};
}

enum class Direction { Enter, Remove };

Result<std::vector<Change>> PlanChanges(const RecollFolders& folders, Direction direction) {
    std::vector<Change> changes;
    for (const ConfigFile& file : kFiles) {
        const std::string source = folders.lines + "/" + file.name;
        const Result<std::string> lines = ReadRegularFile(source, kLargestFile);
        if (!lines) return lines.Why().In(source);
        Change change{folders.configuration + "/" + file.name, {}, {}};
        const Result<std::optional<std::string>> before = ReadIfThere(change.path);
        if (!before) return before.Why();
        change.before = *before;
        if (direction == Direction::Enter) {
            if (Failure failure = CheckSlots(change, *lines)) return failure;
            change.after = WithRecollLines(change.before, *lines, file.place);
        } else {
            change.after = WithoutRecollLines(change.before, *lines);
        }
        if (change.after != change.before) changes.push_back(std::move(change));
    }
    return changes;
}

// Behind a link it is the file that the link leads to that changes. It stays whose it was.
Failure Write(const std::string& path, const std::string& text) {
    MarkedFile file;
    if (Failure failure = file.Create(path)) return failure;
    struct stat present;
    const bool replaces = stat(path.c_str(), &present) == 0;
    if (replaces) {
        if (fchown(file.Descriptor(), present.st_uid, present.st_gid) != 0) errno = 0;  // it is the user's own then
        if (fchmod(file.Descriptor(), present.st_mode & 07777) != 0) return SystemFailure(errno);
    }
    if (!WriteAll(file.Descriptor(), text)) return SystemFailure(errno);
    return file.Commit(replaces ? MarkedFile::Place::Replace : MarkedFile::Place::Free, true);
}

Failure Carry(const Change& change) {
    const std::string path = RealPath(change.path);
    if (!change.after) return unlink(path.c_str()) == 0 ? Failure() : SystemFailure(errno);
    return Write(path, *change.after);
}

Result<std::vector<std::string>> CarryOut(const RecollFolders& folders, Direction direction) {
    const Result<std::vector<Change>> changes = PlanChanges(folders, direction);
    if (!changes) return changes.Why();
    const std::string& folder = folders.configuration;
    if (direction == Direction::Enter && mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        return SystemFailure(errno).In(folder);
    }
    std::vector<std::string> paths;
    for (const Change& change : *changes) {
        if (Failure failure = Carry(change)) return failure.In(change.path);
        paths.push_back(change.path);
    }
    const bool anyGone =
        std::any_of(changes->begin(), changes->end(), [](const auto& change) { return !change.after; });
    if (anyGone) rmdir(folder.c_str());  // the system refuses while anything is in it
    return paths;
}

const char* Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr || *value == '\0' ? nullptr : value;
}

}  // namespace

Result<std::vector<std::string>> EnterRecollLines(const RecollFolders& folders) {
    return CarryOut(folders, Direction::Enter);
}

Result<std::vector<std::string>> RemoveRecollLines(const RecollFolders& folders) {
    return CarryOut(folders, Direction::Remove);
}

Result<RecollFolders> FindRecollFolders(const std::string& given) {
    RecollFolders folders{BesideProgram("share/wqf/recoll"), given};
    if (folders.lines.empty()) return Failure{FailureKind::Missing, "the system does not tell where this program lies"};
    if (!given.empty()) return folders;
    if (const char* const named = Variable("RECOLL_CONFDIR")) {
        folders.configuration = named;
    } else if (const char* const home = Variable("HOME")) {
        folders.configuration = std::string(home) + "/.recoll";
    } else {
        return Failure{FailureKind::Missing, "there is no home folder; name the configuration with --confdir"};
    }
    return folders;
}

}  // namespace ZEMA
