// Changes markup as markup, so that most of what the fuzzer tries gets past the parser: elements move, come twice or
// go, attributes get other values. One change in four is of bytes.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed);

namespace {

struct Range {
    std::size_t begin, end;
};

// What to change in a text: whole elements, the insides of their start tags, and the values of attributes.
struct Parts {
    explicit Parts(std::string_view text) {
        std::vector<std::size_t> open;
        for (std::size_t tag = text.find('<'); tag != std::string_view::npos; tag = text.find('<', tag + 1)) {
            const std::size_t end = text.find('>', tag);
            if (end == std::string_view::npos) return;
            if (text[tag + 1] == '/') {
                if (open.empty()) return;
                elements.push_back({open.back(), end + 1});
                open.pop_back();
            } else if (text[tag + 1] != '?' && text[tag + 1] != '!') {
                const bool closed = text[end - 1] == '/';
                if (closed) elements.push_back({tag, end + 1});
                if (!closed) open.push_back(tag);
                FindValues(text, {tag, end});
                places.push_back(end - closed);
            }
        }
    }

    std::vector<Range> elements;
    std::vector<Range> values;
    std::vector<std::size_t> places;  // where an attribute may be put

private:
    void FindValues(std::string_view text, Range tag) {
        while (true) {
            const std::size_t begin = text.find('"', tag.begin);
            const std::size_t end = begin < tag.end ? text.find('"', begin + 1) : begin;
            if (end >= tag.end) return;
            values.push_back({begin + 1, end});
            tag.begin = end + 1;
        }
    }
};

constexpr std::array kValues = {
    "",      "0",    "-1",     "1",    "2",     "5",         "4294967295", "4294967294", "18446744073709551616",
    "true",  "1e39", "-1e-46", "nan",  "hinge", "ball",      "1,2,3",      "0,1,0",      "1,0,0,0,1,0,0,0,1,0,0,0",
    "1,,2,", "0x10", "&#0;",   "&lt;", ",",     "1:2:3:4:5", "3.4e38,1,0", " 7 ",        "1e38,1e38,1e38"};
constexpr std::array kAttributes = {
    " refID=\"1\"",       " designID=\"3003\"",  " materials=\"1,2\"",  " decoration=\"1,0\"", " itemNos=\"300301\"",
    " cameraRef=\"1\"",   " partRef=\"1\"",      " partRefs=\"1,2\"",   " boneRefs=\"1,2\"",   " rigidRef=\"1\"",
    " angle=\"90\"",      " ax=\"1\"",           " t=\"1,2,3\"",        " a=\"0,1,0\"",        " type=\"hinge\"",
    " assemblyID=\"1\"",  " flexRefID=\"1\"",    " controlPoint=\"1\"", " groupRef=\"1\"",     " partRefID=\"1\"",
    " cameraRefID=\"1\"", " versionMajor=\"4\"", " exploded=\"true\"",  " pivot=\"1,2,3\"",    " transformation=\"\""};

class Mutation {
public:
    Mutation(std::string_view text, unsigned seed) : text_(text), parts_(text), random_(seed) {}

    // False where there is nothing to change as markup.
    bool Make() {
        switch (Below(7)) {
            case 0:
                return !parts_.elements.empty() && Replace(OneOf(parts_.elements), "");
            case 1:
                return MoveElement(false);
            case 2:
                return MoveElement(true);
            case 3:
                return !parts_.values.empty() && Replace(OneOf(parts_.values), kValues[Below(kValues.size())]);
            case 4:
                return !parts_.values.empty() && Replace(OneOf(parts_.values), Text(OneOf(parts_.values)));
            case 5:
                return !parts_.values.empty() && ChangeValue(OneOf(parts_.values));
            default:
                return !parts_.places.empty() && AddAttribute(OneOf(parts_.places));
        }
    }

    const std::string& Result() const { return text_; }

private:
    std::size_t Below(std::size_t count) { return random_() % count; }
    template <class T>
    const T& OneOf(const std::vector<T>& all) {
        return all[Below(all.size())];
    }
    std::string Text(Range range) const { return text_.substr(range.begin, range.end - range.begin); }

    bool Replace(Range range, const std::string& by) {
        text_.replace(range.begin, range.end - range.begin, by);
        return true;
    }

    // Puts a copy of an element in front of another one, or into its place.
    bool MoveElement(bool instead) {
        if (parts_.elements.empty()) return false;
        const Range to = OneOf(parts_.elements);
        return Replace({to.begin, instead ? to.end : to.begin}, Text(OneOf(parts_.elements)));
    }

    bool ChangeValue(Range range) {
        std::string value = Text(range);
        const std::size_t size = value.size();
        value.resize(size + 16);
        value.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(value.data()), size, value.size()));
        for (char& byte : value) {
            if (byte == '"' || byte == '<' || (byte & 0xE0) == 0) byte = ',';
        }
        return Replace(range, value);
    }

    bool AddAttribute(std::size_t place) {
        text_.insert(place, kAttributes[Below(kAttributes.size())]);
        return true;
    }

    std::string text_;
    const Parts parts_;
    std::minstd_rand random_;
};

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    Mutation mutation({reinterpret_cast<const char*>(data), size}, seed / 4);
    if (seed % 4 == 0 || !mutation.Make() || mutation.Result().size() > maxSize) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    std::memcpy(data, mutation.Result().data(), mutation.Result().size());
    return mutation.Result().size();
}
