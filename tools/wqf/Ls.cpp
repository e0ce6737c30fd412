// wqf ls: what folders and archives hold.

#include <array>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/archive/StorageTree.h"
#include "host/confinement/Confinement.h"
#include "host/print/JsonWriter.h"
#include "host/system/Output.h"
#include "host/system/Paths.h"
#include "host/system/Utf8Text.h"
#include "storage/PathComponents.h"
#include "tools/wqf/ExitStatus.h"
#include "tools/wqf/StorageCommands.h"

namespace ZEMA {

namespace {

constexpr std::size_t kPieceSize = 1 << 16;  // of text, put out at once
constexpr std::size_t kSizeWidth = 12;

std::string LocalTimeText(const std::optional<timespec>& when) {
    tm time = {};
    if (!when || localtime_r(&when->tv_sec, &time) == nullptr) return "-               ";
    std::array<char, 64> text;
    return std::string(text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &time));
}

// Null where the time is not known.
void WriteTime(const std::optional<timespec>& when, JsonWriter& json) {
    tm time = {};
    if (!when || gmtime_r(&when->tv_sec, &time) == nullptr) return json.Null();
    std::array<char, 64> text;
    json.Text(std::string_view(text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &time)));
}

std::string_view TypeOf(const StorageFacts& facts) {
    if (facts.isLink) return "link";
    return facts.IsFolder() ? "folder" : facts.IsFile() ? "file" : "other";
}

// "drwehx" with "-" for what does not hold: a folder ("l" for a link), may be read, may be written, entries may be made
// or removed in it, hidden, executable.
std::string FlagsText(const StorageFacts& facts) {
    constexpr struct {
        std::uint8_t flag;
        char letter;
    } kLetters[] = {
        {ElementFlags::kReadable, 'r'}, {ElementFlags::kWritable, 'w'},   {ElementFlags::kEntriesWritable, 'e'},
        {ElementFlags::kHidden, 'h'},   {ElementFlags::kExecutable, 'x'},
    };
    std::string text(1, facts.isLink ? 'l' : facts.IsFolder() ? 'd' : '-');
    for (const auto& item : kLetters) text += facts.flags.Has(item.flag) ? item.letter : '-';
    return text;
}

// In columns: flags, size in bytes, and the time of the last change in the local time zone or "-".
std::string ColumnsText(const StorageFacts& facts) {
    const std::string size = std::to_string(facts.size);
    std::string text = FlagsText(facts) + " ";
    if (size.size() < kSizeWidth) text.append(kSizeWidth - size.size(), ' ');
    return text + size + " " + LocalTimeText(facts.modified);
}

// {"path", "name", "type", "size", "flags", "modified"}; the time is in UTC, and null where it is not known.
void WriteEntry(JsonWriter& json, const std::string& path, const StorageEntry& entry) {
    json.BeginObject();
    json.Path("path", path);
    json.Text("name", entry.name);
    json.Text("type", TypeOf(entry.facts));
    json.Number("size", entry.facts.size);
    json.Text("flags", FlagsText(entry.facts));
    json.Key("modified");
    WriteTime(entry.facts.modified, json);
    json.EndObject();
}

// Puts entries into the wanted form and out, many at a time.
class ListingPrinter {
public:
    explicit ListingPrinter(const ListOptions& options)
        : options_(options), json_([this](std::string_view piece) { return output_.Write(piece); }) {
        if (options_.format == ListingFormat::Json) json_.BeginArray();
    }

    // Nobody reads any more.
    bool Failed() const { return output_.Failed(); }

    // A line above the entries of one of several folders.
    void Heading(const std::string& path) {
        if (options_.format != ListingFormat::Text) return;
        text_ += (first_ ? "" : "\n") + Shown(path) + ":\n";
        first_ = false;
    }

    // `label` is how the entry is named in text, `path` all of its path.
    void Print(const std::string& label, const std::string& path, const StorageEntry& entry) {
        first_ = false;
        if (options_.format == ListingFormat::Json) {
            WriteEntry(json_, path, entry);
        } else if (options_.format == ListingFormat::Ndjson) {
            text_ += JsonOf([&](JsonWriter& json) { WriteEntry(json, path, entry); }) + "\n";
        } else {
            if (options_.columns) text_ += ColumnsText(entry.facts) + " ";
            text_ += Shown(label);
            text_ += '\n';
        }
        if (text_.size() >= kPieceSize) Flush();
    }

    const Output& Finish() {
        if (options_.format == ListingFormat::Json) {
            json_.EndArray();
            json_.Finish();
        }
        Flush();
        return output_;
    }

private:
    static std::string Shown(const std::string& bytes) { return EscapeControls(ReplaceInvalidUtf8(bytes)); }

    void Flush() {
        output_.Write(text_);
        text_.clear();
    }

    const ListOptions& options_;
    Output output_;
    JsonWriter json_;
    std::string text_;
    bool first_ = true;
};

// Lists what the arguments name, one after the other, as the printer has it.
class Lister {
public:
    Lister(const ListOptions& options, StorageReport& report) : options_(options), report_(report), printer_(options) {}

    void List(const std::string& path) {
        if (NameOf(path).find('*') != std::string::npos) return ListMatches(path);
        Result<StorageItem> item = tree_.Find(path);
        if (item && item->facts.IsMissing() && !item->facts.isLink) item = WhyMissing(item->facts);
        if (item) item = tree_.Enter(*item);
        if (!item) return report_.Fail(path, item.Why().text);
        if (!item->facts.IsFolder()) return printer_.Print(path, path, {NameOf(path), item->facts});
        if (options_.paths.size() > 1) printer_.Heading(path);
        ListFolder(*item, "");
        TellOfHidden(*item);
    }

    bool Failed() const { return printer_.Failed(); }
    const Output& Finish() { return printer_.Finish(); }

private:
    void ListMatches(const std::string& path) {
        const std::size_t slash = path.rfind('/');
        const std::string start = slash == std::string::npos ? "" : path.substr(0, slash + 1);
        std::vector<StorageEntry> entries;
        const Result<StorageItem> folder = tree_.Find(start.empty() ? "." : start);
        const std::optional<String> pattern = MemberName(NameOf(path));
        const Failure failure = folder ? tree_.List(*folder, entries) : folder.Why();
        if (failure) return report_.Fail(path, failure.text);
        if (!pattern) return report_.Fail(path, "it is not UTF-8");
        bool found = false;
        for (const StorageEntry& entry : entries) {
            const std::optional<String> name = MemberName(entry.name);
            if (!name || !MatchPattern(*name, *pattern)) continue;
            found = true;
            printer_.Print(start + entry.name, start + entry.name, entry);
            if (options_.recursive && entry.facts.IsFolder() && !entry.facts.isLink) {
                ListFolder(tree_.Child(*folder, entry.name), start + entry.name + "/");
            }
        }
        if (!found) report_.Fail(path, "no such file");
    }

    void TellOfHidden(const StorageItem& folder) {
        if (!folder.archive || !folder.archive->Names()) return;
        const MemberNames& names = **folder.archive->Names();
        for (const std::uint32_t hidden : names.Hidden(folder.inner)) {
            report_.Fail(folder.shown, "no path leads to its member '" + std::string(names.Name(hidden)) +
                                           "': another one has that name, or it is no name for a file");
        }
        for (const std::uint32_t below : names.BelowFiles(folder.inner)) {
            report_.Fail(folder.shown, "no path leads to its member '" + std::string(names.Name(below)) +
                                           "': what it lies below is a file");
        }
    }

    // Folders before what lies in them; trees may be of any depth, so those that are still to come are a list.
    void ListFolder(const StorageItem& top, const std::string& topLabel) {
        // An entry that is printed when its turn comes, with its path as it is shown.
        struct Pending {
            StorageItem folder;
            std::string label;
            StorageEntry entry;  // to be printed before
        };
        std::vector<Pending> pending;
        bool complete = true;
        ListEntries(top, topLabel, pending);
        while (!pending.empty() && !printer_.Failed()) {
            const Pending next = std::move(pending.back());
            pending.pop_back();
            printer_.Print(next.label, next.folder.shown, next.entry);
            if (!next.entry.facts.IsFolder() || next.entry.facts.isLink) continue;
            const bool follows = next.folder.shown.size() <= kLongestPath;
            if (follows) ListEntries(next.folder, next.label + "/", pending);
            complete = complete && follows;
        }
        const std::string limit = std::to_string(kLongestPath);
        if (!complete) report_.Fail(top.shown, "what lies behind paths of " + limit + " bytes is left out");
    }

    template <class Pending>
    void ListEntries(const StorageItem& folder, const std::string& label, std::vector<Pending>& pending) {
        std::vector<StorageEntry> entries;
        if (const Failure failure = tree_.List(folder, entries)) report_.Fail(folder.shown, failure.text);
        const std::string start = folder.shown + (folder.shown.ends_with('/') ? "" : "/");
        if (!options_.recursive) {
            for (const StorageEntry& entry : entries) printer_.Print(label + entry.name, start + entry.name, entry);
            return;
        }
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
            StorageItem child;
            child.shown = start + entry->name;
            if (entry->facts.IsFolder()) child = tree_.Child(folder, entry->name);
            pending.push_back({child, label + entry->name, *entry});
        }
    }

    const ListOptions& options_;
    StorageReport& report_;
    StorageTree tree_;
    ListingPrinter printer_;
};

}  // namespace

int RunLs(const ListOptions& options) {
    Confine();
    StorageReport report = ReportOf("list");
    Lister lister(options, report);
    for (const std::string& path : options.paths) {
        if (!lister.Failed()) lister.List(path);
    }
    const Output& output = lister.Finish();
    return output.Failed() ? ExitStatusOf(output) : ExitStatusOf(report);
}

}  // namespace ZEMA
