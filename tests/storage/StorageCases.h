// What is done to a storage, in files of cases:
//
//     == What the case shows
//     stored d/a text
//     > rename d/a b
//     > list d/*: b
//     > read d/a: nothing
//
// In front stands what there is, in words of the fixture, then steps with their answers; "yes" goes without saying.
// Steps name elements by their paths below the fixture's directory, or from the root with a slash in front. "t*300"
// stands for 300 letters, "noise*300" for bytes that do not pack, \xE9 for one byte, "-" for nothing.
//
//     make P                        a directory in one that is there
//     open P, create P              a directory, its full path; with those on the way
//     write P text, cut P 5         a file, made where there is none; one that is there
//     read P, list P*, has P, flags P, set P 2E
//     remove P [force], rename P name, move P Q [over] [force], copy P Q [over] [force]
//     hold a P style, tell a, drop a    a file held open: r, w, or a bit each for read, write, and sharing both
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "storage/Path.h"
#include "storage/PathOperations.h"
#include "tests/support/ArchiveBuilder.h"

namespace ZEMA::testing {

using Words = std::vector<std::string>;

// What a word of a case stands for.
inline std::string Meant(std::string word) {
    for (std::size_t at; (at = word.find("\\x")) != std::string::npos;) {
        word.replace(at, 4, 1, static_cast<char>(std::stoi(word.substr(at + 2, 2), nullptr, 16)));
    }
    const std::size_t count = word.find('*') + 1;  // npos + 1 is 0
    if (word == "-") return "";
    if (count == 0 || count == word.size() || word.find('/') != std::string::npos) return word;
    return word.starts_with("noise") ? NoiseBytes(std::stoul(word.substr(count)))
                                     : std::string(std::stoul(word.substr(count)), word[0]);
}

class StorageSteps {
public:
    // Its answer to a step. Those that it does not know are the fixture's.
    std::string Do(const std::string& base, const Words& words) {
        const auto word = [&](std::size_t index) { return index < words.size() ? Meant(words[index]) : ""; };
        const auto says = [&](const char* option) { return std::ranges::count(words, option) != 0; };
        const std::string& verb = words[0];
        if (verb == "drop") return Answer(files_.erase(word(1)) == 1);
        if (verb == "tell") return Contents(*files_[word(1)]);
        const RefPointer<Directory> root = GetRootDirectory();
        const String place = Place(base, word(verb == "hold" ? 2 : 1));
        if (verb == "open" || verb == "create") {
            const RefPointer<Directory> directory = OpenDirectory(*root, place, verb == "create");
            return directory ? Utf8(GetFullPath(*directory, true)) : "nothing";
        }
        if (verb == "list") return Names(*root, place);
        if (verb == "hold") return Answer((files_[word(1)] = Open(*root, place, StyleOf(word(3)))) != nullptr);
        if (verb == "read") {
            const RefPointer<File> file = Open(*root, place, kReadStyle);
            return file ? Contents(*file) : "nothing";
        }
        if (verb == "write" || verb == "cut") {
            const std::string bytes = verb == "cut" ? "" : word(2);
            const std::uint64_t size = verb == "cut" ? std::stoul(words[2]) : bytes.size();
            const RefPointer<File> file = OpenFile(*root, place, &kReadWriteStyle, verb == "write", &size);
            return Answer(file && WriteAt(*file, 0, bytes.size(), bytes.data()));
        }
        const Path path(place), target(Place(base, word(2)));
        Directory* const parent = path.Parent();
        if (parent == nullptr) return "nowhere";
        if (verb == "make") return Answer(parent->CreateDirectory(path.Name()));
        if (verb == "has") return path.IsFile() ? "file" : DirectoryExists(*root, place) ? "folder" : "nothing";
        if (verb == "flags" || verb == "set") {
            ElementFlags flags;
            if (verb == "set") flags.bits = static_cast<std::uint8_t>(std::stoi(words[2], nullptr, 16));
            if (verb == "set") return Answer(parent->SetChildFlags(path.Name(), &flags));
            if (!parent->GetChildFlags(path.Name(), &flags)) return "no";
            std::ostringstream text;
            text << std::uppercase << std::hex << +flags.bits;
            return text.str();
        }
        if (verb == "remove") return Answer(parent->Remove(path.Name(), says("force")));
        if (verb == "rename") return Answer(parent->Rename(path.Name(), FromUtf8(word(2))));
        if (target.Parent() == nullptr) return "nowhere";
        const auto transfer = verb == "move" ? &Directory::Move : &Directory::Copy;
        return Answer((parent->*transfer)(path.Name(), target.Parent(), target.Name(), says("over"), says("force")));
    }

    void DropAll() { files_.clear(); }

private:
    static std::string Utf8(const String& text) { return std::string(text.ToAString().View()); }
    static std::string Answer(bool answer) { return answer ? "yes" : "no"; }

    static String Place(const std::string& base, const std::string& path) {
        std::string whole = path.starts_with("/") ? path.substr(1) : path == "." ? base : base + "/" + path;
        if (whole.ends_with("/")) whole.pop_back();
        return FromUtf8(whole);
    }
    static AccessStyle StyleOf(const std::string& word) {
        if (word.size() == 1) return word == "r" ? kReadStyle : kReadWriteStyle;
        const auto bit = [&](std::size_t index) { return word[index] == '1'; };
        return {bit(0), bit(1), bit(2), bit(3)};
    }
    static RefPointer<File> Open(Directory& root, const String& place, const AccessStyle& style) {
        return OpenFile(root, place, &style, false, nullptr);
    }
    static std::string Contents(File& file) {
        std::string bytes(GetSize(file), '\0');
        if (!ReadAt(file, 0, bytes.size(), bytes.data())) return "unreadable";
        const bool isLong = bytes.size() > 20 && bytes.find_first_not_of(bytes[0]) == std::string::npos;
        return bytes.empty() ? "-" : isLong ? bytes.substr(0, 1) + "*" + std::to_string(bytes.size()) : bytes;
    }
    static std::string Names(Directory& root, const String& pattern) {
        Listing listing;
        std::string names = List(root, pattern, &listing) ? "" : "no";
        for (const Descriptor& entry : listing) {
            names += (names.empty() ? "" : " ") + Utf8(entry.name) + (entry.flags.IsDirectory() ? "/" : "");
        }
        return names.empty() ? "-" : names;
    }

    std::map<std::string, RefPointer<File>> files_;
};

// Each case in a fixture of its own: what is there, then the steps.
template <class Fixture>
void ExpectStorageCases(const std::string& path) {
    std::ifstream file(path);
    std::unique_ptr<Fixture> fixture;
    std::string what;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("== ")) {
            what = line.substr(3);
            fixture.reset();
            fixture = std::make_unique<Fixture>();
        } else if (fixture != nullptr && !line.empty()) {
            const std::size_t colon = line.starts_with("> ") ? line.rfind(": ") : std::string::npos;
            std::istringstream text(line.substr(0, colon));
            const Words words{std::istream_iterator<std::string>(text), {}};
            if (words[0] != ">") {
                fixture->Prepare(words);
            } else {
                const std::string answer = fixture->Do(Words(words.begin() + 1, words.end()));
                EXPECT_EQ(answer, colon == std::string::npos ? "yes" : line.substr(colon + 2)) << what << "\n" << line;
            }
        }
    }
    EXPECT_FALSE(what.empty()) << path;
}

}  // namespace ZEMA::testing
