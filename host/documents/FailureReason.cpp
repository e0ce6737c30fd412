#include "host/documents/FailureReason.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <span>
#include <string_view>

#include "core/AString.h"
#include "host/archive/ArchiveMend.h"
#include "host/archive/StorageReader.h"
#include "host/archive/StorageTree.h"
#include "loader/ModelLoader.h"
#include "xml/XMLEventParser.h"

namespace ZEMA {

namespace {

using Error = ModelLoader::Error;

// The kinds that say that there is no whole markup of a format that is read; what there is instead has to be looked at.
constexpr std::uint32_t kNoMarkup = Error::PathKind | Error::VersionKind | Error::ParserKind | Error::ContentKind;

Failure Damaged(const std::string& text) {
    return {FailureKind::Damaged, text};
}

Failure SomethingElse(const std::string& text) {
    return {FailureKind::WrongKind, text};
}

// What is wrong with a model whose markup is sound. The loader's own words behind it are more exact, and for those who
// know the format.
Failure ModelFault(std::uint32_t kind) {
    switch (kind) {
        case Error::JointKind:
            return Damaged("a joint in it is of no known type, or joins what is not there");
        case Error::CameraKind:
            return Damaged("a camera in it has no number of its own, or one that is named is not there");
        case Error::BrickKind:
            return Damaged("a brick in it has no design, or no number of its own");
        case Error::PartKind:
            return Damaged("a part in it lacks a design, a material or a number of its own, or has a wrong one");
        case Error::BoneKind:
            return Damaged("a bone in it has no number of its own");
        case Error::RigidKind:
            return Damaged("a rigid in it has no number of its own");
        case Error::BIKind:
            return Damaged("its building instructions name a part or a camera that is not there");
        default:
            return Damaged("the model in it is not complete");
    }
}

// Only what would help is recommended. To find that out takes as long as unpacking the archive, which is more than a
// sentence about a very large one is worth.
constexpr std::uint64_t kLargestExamined = 256 << 20;  // bytes

Failure WithAdvice(const StorageItem& document, Failure failure) {
    if (document.archive || !document.facts.IsFile() || document.facts.size > kLargestExamined) return failure;
    for (const bool drop : {false, true}) {
        const Result<MendReport> report = MendArchive(document.native, {.drop = drop, .dryRun = true});
        if (!report || report->faults.empty() || !report->obstacles.empty()) continue;
        failure.text += drop ? "; 'wqf mend --drop' rewrites it" : "; 'wqf mend' rewrites it";
        break;
    }
    return failure;
}

// A folder that was packed with the model in it is the most frequent case.
Failure WithoutModel(const StorageItem& archive) {
    const std::string start = "it is an archive without a model: ";
    const std::string model = kModelName;
    for (const auto& [name, child] : archive.node->GetChildren()) {
        if (!child->FindChild(String(kModelName))) continue;
        const std::string folder(child->Name().ToAString().View());
        return SomethingElse(start + model + " lies in its folder '" + folder + "' and not at the top");
    }
    return SomethingElse(start + "there is no " + model + " in it");
}

Result<AString> ReadText(const StorageItem& item) {
    if (item.facts.IsFile() && item.facts.size > static_cast<std::uint64_t>(std::numeric_limits<int>::max())) {
        return Failure{FailureKind::Unsupported, "it is larger than 2 GiB"};
    }
    const Result<std::unique_ptr<StorageReader>> reader = StorageReader::Open(item);
    if (!reader) return reader.Why();
    AString text;
    std::vector<char> piece(kReadBufferSize);
    while (true) {
        const Result<std::size_t> count = (*reader)->Read(piece.data(), piece.size());
        if (!count) return count.Why();
        if (*count == 0) return text;
        text.Append(piece.data(), static_cast<std::uint32_t>(*count));
    }
}

// The name of the root element and the version that it states, as they are written.
class RootReader : private XMLEventParser {
public:
    // Whether the text is well-formed; otherwise `fault` says what is wrong.
    bool Read(const AString& text, MarkupFault& fault) {
        DeliverText(false);
        return Parse(text, &fault);
    }

    bool IsThere() const { return isThere_; }
    const std::string& Name() const { return name_; }

    std::string Version() const { return major_ + (minor_.empty() || minor_ == "0" ? "" : "." + minor_); }

private:
    void StartElement(std::string_view name, std::span<const XMLAttribute> attributes) override {
        if (std::exchange(isThere_, true)) return;
        name_ = name;
        for (const XMLAttribute& attribute : attributes) {
            if (attribute.name == "versionMajor") major_ = attribute.value;
            if (attribute.name == "versionMinor") minor_ = attribute.value;
        }
    }
    void EndElement(std::string_view) override {}
    void CharacterData(std::string_view) override {}

    bool isThere_ = false;
    std::string name_;
    std::string major_;
    std::string minor_;
};

// Text from a document, for a sentence.
std::string Quoted(const std::string& text) {
    constexpr std::size_t kLongest = 40;  // bytes
    return "'" + (text.size() <= kLongest ? text : text.substr(0, kLongest) + "...") + "'";
}

// Whether it may have been meant as XML, in an encoding with one or two bytes for a character.
bool LooksLikeMarkup(std::string_view text) {
    constexpr std::string_view kInFront("\xEF\xBB\xBF\xFE\xFF \t\r\n\0", 10);  // byte order marks, white space
    const std::size_t first = text.find_first_not_of(kInFront);
    return first != std::string_view::npos && text[first] == '<';
}

Failure NoMarkup(std::string_view text, bool isMember) {
    constexpr struct {
        std::string_view start;
        const char* name;
    } kKnown[] = {
        {"7z\xBC\xAF\x27\x1C", "a 7z archive"},
        {"Rar!\x1A\x07", "a RAR archive"},
        {"\x1F\x8B", "a gzip file"},
        {"BZh", "a bzip2 file"},
        {"\xFD\x37zXZ", "an xz file"},
        {"%PDF-", "a PDF document"},
        {"\x89PNG", "a PNG image"},
        {"\xFF\xD8\xFF", "a JPEG image"},
    };
    if (text.find_first_not_of('\0') == std::string_view::npos) return Damaged("it holds nothing but zero bytes");
    const auto* known = std::find_if(std::begin(kKnown), std::end(kKnown),
                                     [&](const auto& row) { return text.starts_with(row.start); });
    const std::string what = known == std::end(kKnown) ? "" : std::string(known->name) + ", ";
    return SomethingElse("it is " + what + (isMember ? "no model" : "neither a ZIP archive nor a model"));
}

Failure WrongVersion(const RootReader& root) {
    const std::string version = root.Version();
    if (version.empty()) return {FailureKind::Unsupported, "it does not say of which format it is"};
    return {FailureKind::Unsupported, "it is of format " + Quoted(version) + "; formats 5 and 4 are read"};
}

// Why a text, the document itself or a member of it, is no model, when it is the markup that the loaders stumbled over.
Failure ExplainText(const AString& text, bool isMember, std::uint32_t errorMask) {
    if (text.IsEmpty()) return SomethingElse("it is empty");
    if (!LooksLikeMarkup(text.View())) return NoMarkup(text.View(), isMember);
    RootReader root;
    MarkupFault fault;
    const bool isSound = root.Read(text, fault);
    if (root.IsThere() && root.Name() != "WQFML") {
        return SomethingElse("it is XML, but no model: its root element is " + Quoted(root.Name()) + ", not 'WQFML'");
    }
    if ((errorMask & Error::VersionKind) != 0) return WrongVersion(root);
    if (isSound) return {FailureKind::Limit, "it could not be read, maybe for want of memory"};
    return Damaged("it is malformed in line " + std::to_string(fault.line) + ", column " +
                   std::to_string(fault.column) + ": " + fault.text);
}

// The same for a document, with the way to its text.
Failure ExplainFile(const std::string& path, std::uint32_t errorMask) {
    StorageTree tree;
    const Result<StorageItem> document = tree.Find(path);
    if (!document) return document.Why();
    const Result<StorageItem> entered = tree.Enter(*document);
    if (!entered) return WithAdvice(*document, entered.Why());
    if (!entered->IsArchiveRoot()) {
        const Result<AString> text = ReadText(*document);
        return text ? ExplainText(*text, false, errorMask) : text.Why();
    }
    const StorageItem model = tree.Child(*entered, kModelName);
    if (model.facts.IsMissing()) return WithoutModel(*entered);
    const Result<AString> text = ReadText(model);
    const Failure failure = text ? ExplainText(*text, true, errorMask) : WithAdvice(*document, text.Why());
    return failure.In("'" + std::string(model.node->Name().ToAString().View()) + "' in it");
}

}  // namespace

// The first loader leaves a document to the second when the version is not its own, or when the markup is malformed;
// then the second is the one that was meant if it has no objection to the version.
const LoadAttempt& ClaimedAttempt(const std::vector<LoadAttempt>& attempts) {
    const LoadAttempt& first = attempts.front();
    const LoadAttempt& last = attempts.back();
    const bool isLasts = (first.errorMask & ~last.errorMask & Error::VersionKind) != 0;
    return isLasts ? last : first;
}

Failure WhyNotLoaded(const std::string& path, const std::vector<LoadAttempt>& attempts) {
    const LoadAttempt& claimed = ClaimedAttempt(attempts);
    if ((claimed.errorMask & kNoMarkup) == 0) return ModelFault(claimed.firstErrorKind);
    return ExplainFile(path, claimed.errorMask);
}

}  // namespace ZEMA
