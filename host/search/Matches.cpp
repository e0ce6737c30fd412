#include "host/search/Matches.h"

#include <algorithm>
#include <string>

#include "host/search/Fold.h"

namespace ZEMA {

namespace {

// Whether the words of the condition are those from `start` on.
bool StandsAt(const WordsCondition& condition, const std::vector<FoldedWord>& words, std::size_t start) {
    if (condition.words.size() > words.size() - start) return false;
    for (std::size_t i = 0; i < condition.words.size(); ++i) {
        const bool mayGoOn = condition.isPrefix && i + 1 == condition.words.size();
        const std::string& word = words[start + i].text;
        if (mayGoOn ? !word.starts_with(condition.words[i]) : word != condition.words[i]) return false;
    }
    return true;
}

// Joins ranges that touch or overlap.
std::vector<TextRange> Joined(std::vector<TextRange> ranges) {
    std::sort(ranges.begin(), ranges.end());
    std::vector<TextRange> joined;
    for (const TextRange& range : ranges) {
        if (!joined.empty() && range.first <= joined.back().second) {
            joined.back().second = std::max(joined.back().second, range.second);
        } else {
            joined.push_back(range);
        }
    }
    return joined;
}

}  // namespace

Matches::Matches(const Query& query) {
    Collect(query);
}

// What must not hold is nowhere to be shown.
void Matches::Collect(const Query& query) {
    if (const auto* const words = std::get_if<WordsCondition>(&query.content)) {
        conditions_.push_back(*words);
    } else if (const auto* const all = std::get_if<AllOf>(&query.content)) {
        for (const Query& part : all->parts) Collect(part);
    } else if (const auto* const any = std::get_if<AnyOf>(&query.content)) {
        for (const Query& part : any->parts) Collect(part);
    }
}

std::vector<TextRange> Matches::In(TextField field, std::string_view utf8) const {
    const std::vector<FoldedWord> words = FoldedWords(utf8);
    std::vector<TextRange> ranges;
    for (const WordsCondition& condition : conditions_) {
        if (condition.field != TextField::Anywhere && condition.field != field) continue;
        for (std::size_t start = 0; start < words.size(); ++start) {
            if (StandsAt(condition, words, start))
                ranges.emplace_back(words[start].begin, words[start + condition.words.size() - 1].end);
        }
    }
    return Joined(std::move(ranges));
}

}  // namespace ZEMA
