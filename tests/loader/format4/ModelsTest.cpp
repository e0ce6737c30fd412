#include <gtest/gtest.h>

#include <algorithm>

#include "loader/DesignCatalogue.h"
#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

using Numbers = std::vector<unsigned long>;

Numbers NumbersOf(const BasicArray<unsigned long>& numbers) {
    return {numbers.begin(), numbers.end()};
}

LoadedScene WithParts(const std::string& parts) {
    return LoadedScene(Root(Group(parts)));
}

TEST(Format4Parts, ReadsTexts) {
    const LoadedScene loaded = WithParts(Part(1, "name='\xC3\xA4' itemNos='1,2'") + Part(2, "itemNos='\xC3\xA4'"));
    EXPECT_EQ(Utf8(loaded.Part(0).name), "\xC3\xA4");
    EXPECT_EQ(Utf8(loaded.Part(0).itemNos), "1,2");
    EXPECT_TRUE(loaded.Part(1).itemNos.IsEmpty()) << "item numbers are ASCII";
}

TEST(Format4Parts, ReadsMaterialsOfSurfaces) {
    const std::pair<const char*, Numbers> rows[] = {
        {"<SubMaterial surfaceID='3' materialID='5'/>", {21, 0, 0, 5}},
        {"<SubMaterial surfaceID='1' materialID='5'/><SubMaterial surfaceID='1' materialID='6'/>", {21, 6}},
        {"<SubMaterial surfaceID='0' materialID='5'/>", {21}},
        {"<SubMaterial surfaceID='2' materialID='0'/>", {21}},
        {"<SubMaterial><SubMaterial surfaceID='1' materialID='5'/></SubMaterial>", {21, 5}},
        {"<Other><SubMaterial surfaceID='1' materialID='5'/></Other>", {21}},
        {"<Part refID='2' materialID='1'><SubMaterial surfaceID='1' materialID='5'/></Part>", {21}},
    };
    for (const auto& [content, materials] : rows) {
        SCOPED_TRACE(content);
        const LoadedScene loaded = WithParts(Part(1, "", content));
        EXPECT_EQ(NumbersOf(loaded.Part(0).materials), materials);
        EXPECT_EQ(loaded.Group(0).parts.Size(), 1U);
    }
}

TEST(Format4Parts, LaterPartOfANumberIsMeant) {
    const LoadedScene loaded(Root(Group(Part(1) + Part(1)) + Instruction(Step("", PartRef(1)))));
    EXPECT_EQ(loaded->buildingInstructions[0].steps[0]->parts[0].part.Get(), &loaded.Part(1));
}

// A control point of this design in a document of that brick set, turned so that its own x axis is the model's -z axis.
LoadedScene Corrected(std::uint32_t design, const std::string& brickSet) {
    return LoadedScene(
        Root("<Meta>" + brickSet + "</Meta>" +
             Group(Part(1, "flexRefID='1' controlPoint='0' angle='90' designID='" + std::to_string(design) + "'"))));
}

std::string BrickSet(const std::string& version) {
    return "<BrickSet version='" + version + "'/>";
}

std::string VersionText(std::uint32_t major, std::uint32_t minor) {
    return std::to_string(major) + "." + std::to_string(minor);
}

// The last version before the one that ends the row: "4.2.9" before 4.3, "3.999" before 4.0.
std::string Before(const LegacyCorrection& row) {
    if (row.fixedInMinor == 0) return VersionText(row.fixedInMajor - 1, 999);
    return VersionText(row.fixedInMajor, row.fixedInMinor - 1) + ".9";
}

TEST(Format4Parts, CorrectsOldDesigns) {
    for (const LegacyCorrection& row : LegacyCorrections()) {
        SCOPED_TRACE(row.design);
        const bool isRetired = row.successor != 0;
        const LoadedScene loaded = Corrected(row.design, BrickSet(isRetired ? "1" : Before(row)));
        EXPECT_EQ(loaded.Part(0).designID, isRetired ? row.successor : row.design);
        EXPECT_EQ(loaded.Part(0).flex->designID, row.design) << "as it was read";
        EXPECT_NEAR(loaded.Part(0).transformation.m[14], isRetired ? 0 : 0.8, 1e-6)
            << "along the part's own x axis; one correction at most";
        if (isRetired) continue;
        const LoadedScene later = Corrected(row.design, BrickSet(VersionText(row.fixedInMajor, row.fixedInMinor)));
        EXPECT_NEAR(later.Part(0).transformation.m[14], 0, 1e-6) << "no longer from that version on";
    }
}

TEST(Format4Parts, CorrectsByTheVersionOfTheBrickSet) {
    const auto retired = std::find_if(LegacyCorrections().begin(), LegacyCorrections().end(),
                                      [](const LegacyCorrection& row) { return row.successor != 0; });
    const std::pair<std::string, bool> rows[] = {
        {"", false},
        {BrickSet("0.9"), false},
        {"<BrickSet/>", false},
        {BrickSet("\xC3\xA4 1"), false},
        {"<Brand version='1'/>", false},
        {BrickSet("1") + BrickSet("0"), false},
        {BrickSet("1") + BrickSet("x"), true},
    };
    for (const auto& [brickSet, corrected] : rows) {
        SCOPED_TRACE(brickSet);
        const std::uint32_t expected = corrected ? retired->successor : retired->design;
        EXPECT_EQ(Corrected(retired->design, brickSet).Part(0).designID, expected);
    }
    const LoadedScene late(Root(Group(Part(1, "designID='" + std::to_string(retired->design) + "'")) + "<Meta>" +
                                BrickSet("1") + "</Meta>"));
    EXPECT_EQ(late.Part(0).designID, retired->design) << "it must be known when the part is read";
}

}  // namespace
}  // namespace ZEMA::testing
