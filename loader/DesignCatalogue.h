// What is known of individual brick designs: which are retired, which one is delivered as two, which need correcting.
#pragma once

#include <cstdint>
#include <span>

namespace ZEMA {

// A retired design and its successor.
struct DesignSubstitution {
    std::uint32_t oldDesign;
    std::uint32_t newDesign;
};

// The combined design that documents give as one brick and that is delivered as two.
struct DesignSplit {
    std::uint32_t combined;
    std::uint32_t first;
    std::uint32_t second;
};

// How far documents of old brick sets place a design from where it belongs: a turn about the x axis, then a move along
// y and z.
struct DesignCorrection {
    std::uint32_t design;
    float y;
    float z;
    float angle;  // radians; 0 does not turn
};

// What documents of format 4 with old brick sets have wrong about a design: it has a successor, or, until the brick set
// of that version, it stands off by kLegacyOffset along its own x axis.
struct LegacyCorrection {
    std::uint32_t design;
    std::uint32_t successor;  // 0 where the placement is wrong
    std::uint32_t fixedInMajor;
    std::uint32_t fixedInMinor;
};

inline constexpr float kLegacyOffset = -0.8F;

// Ascending by the (old) design.
std::span<const DesignSubstitution> DesignSubstitutions();
const DesignSplit& CombinedDesign();
std::span<const std::uint32_t> FirstCorrections();  // all of these are off by the same distance
std::span<const DesignCorrection> SecondCorrections();

// The successor of a retired design, or the design itself. A successor is not looked up again.
std::uint32_t SubstituteDesign(std::uint32_t design);

bool NeedsFirstCorrection(std::uint32_t design);

// In the order of testing: the first row of a design counts, and a successor is not looked up again.
std::span<const LegacyCorrection> LegacyCorrections();

// Null when the design needs none.
const LegacyCorrection* FindLegacyCorrection(std::uint32_t design);

// Null when the design needs none.
const DesignCorrection* FindSecondCorrection(std::uint32_t design);

}  // namespace ZEMA
