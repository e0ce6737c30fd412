#include "host/archive/EntryText.h"

#include <array>
#include <cstddef>
#include <ctime>
#include <optional>
#include <string_view>

namespace ZEMA {

namespace {

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

}  // namespace

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

std::string ColumnsText(const StorageFacts& facts) {
    const std::string size = std::to_string(facts.size);
    std::string text = FlagsText(facts) + " ";
    if (size.size() < kSizeWidth) text.append(kSizeWidth - size.size(), ' ');
    return text + size + " " + LocalTimeText(facts.modified);
}

void WriteEntry(JsonWriter& json, const std::string& path, const StorageEntry& entry) {
    json.BeginObject();
    json.Text("path", path);
    json.Text("name", entry.name);
    json.Text("type", TypeOf(entry.facts));
    json.Number("size", entry.facts.size);
    json.Text("flags", FlagsText(entry.facts));
    json.Key("modified");
    WriteTime(entry.facts.modified, json);
    json.EndObject();
}

}  // namespace ZEMA
