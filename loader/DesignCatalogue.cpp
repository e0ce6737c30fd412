// STAND-IN DATA. The design numbers in this file are invented; the owner of the brick catalogue replaces them by the
// real ones. Nothing outside this file depends on a number. The tables must stay ascending by their first column, which
// the compiler checks, except for the legacy corrections, which stand in the order of testing. The distances, angles
// and versions of the corrections belong to the mechanism and keep their values.
#include "loader/DesignCatalogue.h"

#include <algorithm>
#include <functional>

namespace ZEMA {

namespace {

// clang-format off
constexpr DesignSubstitution kSubstitutions[] = {
    {10417, 61022},
    {11903, 61308},
    {12288, 90655},
    {13540, 73381},  // a successor that is itself retired
    {14076, 62419},
    {15831, 86240},  // the combined design
    {17702, 63007},
    {18219, 63514},
    {20364, 64180},
    {21975, 64733},
    {23118, 92173},
    {26690, 65296},  // documents never name this corrected design, only the retired one
    {28451, 66038},
    {31127, 66541},
    {33906, 67224},
    {40573, 67890},
    {44218, 68115},
    {52369, 68702},
    {57840, 93418},
    {73381, 69347},
    {79114, 70226},
};

constexpr DesignSplit kSplit = {86240, 86241, 86242};

constexpr std::uint32_t kFirstCorrections[] = {81530, 81547};

constexpr DesignCorrection kSecondCorrections[] = {
    {65296, 0.96F, 0, 0},
    {90112, 0.105F, 0, 0},
    {90347, 0.367F, 0.097F, 0.2617994F},
    {90655, -0.11F, 0, 0},
    {90871, 0.174F, 0, 0},
    {91034, 0.1285F, 0, 0},
    {91260, 0.204F, 0, 0},
    {91538, 0.239F, 0, 0},
    {91795, 0.193F, 0.05F, 0.15707964F},
    {91906, 0.96F, 0, 0},
    {92173, 0.263F, 0, 0},
    {92450, 0.27F, 0, 0},
    {92688, 0.17F, 0, 0},
    {92931, 0.128F, 0, 0},
    {93185, 0.14F, 0.002F, 0},
    {93418, -0.054F, 0, 0},
};

constexpr LegacyCorrection kLegacyCorrections[] = {
    {45310, 0, 38, 0},
    {45627, 47914, 0, 0},
    {46083, 48250, 0, 0},
    {46541, 0, 38, 0},
    {47914, 0, 38, 3},  // a successor that is itself corrected
    {49176, 0, 39, 0},
};
// clang-format on

template <class Rows, class Key = std::identity>
constexpr bool Ascends(const Rows& rows, Key key = {}) {
    return std::ranges::adjacent_find(rows, std::greater_equal<>(), key) == std::ranges::end(rows);
}

static_assert(Ascends(kSubstitutions, &DesignSubstitution::oldDesign));
static_assert(Ascends(kFirstCorrections));
static_assert(Ascends(kSecondCorrections, &DesignCorrection::design));

// The row whose key is `design`, or null.
template <class Row, class Key>
const Row* Find(std::span<const Row> rows, std::uint32_t design, Key key) {
    const auto row = std::ranges::lower_bound(rows, design, std::less<>(), key);
    return row != rows.end() && std::invoke(key, *row) == design ? &*row : nullptr;
}

}  // namespace

std::span<const DesignSubstitution> DesignSubstitutions() {
    return kSubstitutions;
}

const DesignSplit& CombinedDesign() {
    return kSplit;
}

std::span<const std::uint32_t> FirstCorrections() {
    return kFirstCorrections;
}

std::span<const DesignCorrection> SecondCorrections() {
    return kSecondCorrections;
}

std::span<const LegacyCorrection> LegacyCorrections() {
    return kLegacyCorrections;
}

std::uint32_t SubstituteDesign(std::uint32_t design) {
    const DesignSubstitution* row = Find(DesignSubstitutions(), design, &DesignSubstitution::oldDesign);
    return row == nullptr ? design : row->newDesign;
}

bool NeedsFirstCorrection(std::uint32_t design) {
    return std::ranges::binary_search(kFirstCorrections, design);
}

const LegacyCorrection* FindLegacyCorrection(std::uint32_t design) {
    const auto row = std::ranges::find(kLegacyCorrections, design, &LegacyCorrection::design);
    return row == std::end(kLegacyCorrections) ? nullptr : row;
}

const DesignCorrection* FindSecondCorrection(std::uint32_t design) {
    return Find(SecondCorrections(), design, &DesignCorrection::design);
}

}  // namespace ZEMA
