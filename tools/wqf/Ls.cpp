// wqf ls: what folders and archives hold.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/archive/EntryText.h"
#include "host/archive/StorageTree.h"
#include "host/system/Output.h"
#include "host/system/Paths.h"
#include "host/system/Utf8Text.h"
#include "storage/PathComponents.h"
#include "tools/wqf/Commands.h"
#include "tools/wqf/StorageCommands.h"

namespace ZEMA {

namespace {

constexpr std::size_t kPieceSize = 1 << 16;

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

class Lister {
public:
    Lister(const ListOptions& options, StorageReport& report) : options_(options), report_(report), printer_(options) {}

    void List(const std::string& path) {
        if (NameOf(path).find('*') != std::string::npos) return ListMatches(path);
        std::string problem;
        std::optional<StorageItem> item = tree_.Find(path, problem);
        if (item && item->facts.IsMissing() && !item->facts.isLink) problem = "no such file";
        if (item && item->facts.IsFile()) item = tree_.Enter(*item, problem);
        if (!item || !problem.empty()) return report_.Fail(path, problem);
        if (!item->facts.IsFolder()) return printer_.Print(path, path, {NameOf(path), item->facts});
        if (options_.paths.size() > 1) printer_.Heading(path);
        ListFolder(*item, "");
    }

    bool Failed() const { return printer_.Failed(); }
    const Output& Finish() { return printer_.Finish(); }

private:
    void ListMatches(const std::string& path) {
        const std::size_t slash = path.rfind('/');
        const std::string start = slash == std::string::npos ? "" : path.substr(0, slash + 1);
        std::string problem;
        std::vector<StorageEntry> entries;
        const std::optional<StorageItem> folder = tree_.Find(start.empty() ? "." : start, problem);
        const std::optional<String> pattern = MemberName(NameOf(path));
        if (!folder || !tree_.List(*folder, entries, problem)) return report_.Fail(path, problem);
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

    // Folders before what lies in them; trees may be of any depth, so those that are still to come are a list.
    void ListFolder(const StorageItem& top, const std::string& topLabel) {
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
        std::string problem;
        if (!tree_.List(folder, entries, problem)) report_.Fail(folder.shown, problem);
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
    StorageReport report = ReportOf("list");
    Lister lister(options, report);
    for (const std::string& path : options.paths) {
        if (!lister.Failed()) lister.List(path);
    }
    const Output& output = lister.Finish();
    return output.Failed() ? ExitStatusOf(output) : ExitStatusOf(report);
}

}  // namespace ZEMA
