// Documents whose indices, size or nesting would exhaust a careless reader. What is quadratic here runs into the test's
// time limit.
#include <gtest/gtest.h>

#include <string_view>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

std::string Surface(const char* element, std::uint64_t surface) {
    return std::string("<") + element + " surfaceID='" + std::to_string(surface) +
           "' materialID='1' decorationID='1'/>";
}

std::string FlexPart(int refID, std::uint64_t controlPoint) {
    return Part(refID, "flexRefID='1' controlPoint='" + std::to_string(controlPoint) + "'");
}

TEST(HostileModel, BoundsWhatIndicesAllocate) {
    const std::string padding(1000, ' ');
    const std::size_t length = Root(Group(FlexPart(1, 10000)) + padding).size();
    const struct {
        const char* what;
        std::string document;
        bool tooMuch;
    } rows[] = {
        {"surface of a material", Root(Group(Part(1, "", Surface("SubMaterial", 60000)))), false},
        {"two of them share the budget",
         Root(Group(Part(1, "", Surface("SubMaterial", 60000)) + Part(2, "", Surface("SubMaterial", 60000)))), true},
        {"so does the conversion",
         Root(Group(Part(1, "", Surface("SubMaterial", 60000)) + Part(2, "", Surface("Decoration", 60000)))), true},
        {"the same surface again costs nothing",
         Root(Group(Part(1, "", Surface("SubMaterial", 60000) + Surface("SubMaterial", 60000)))), false},
        {"the largest surface", Root(Group(Part(1, "", Surface("SubMaterial", 4294967295)))), true},
        {"the largest control point", Root(Group(FlexPart(1, 4294967294))), true},
        {"as many entries as the text allows", Root(Group(FlexPart(1, length + 65536 - 1)) + padding), false},
        {"one more", Root(Group(FlexPart(1, length + 65536)) + padding), true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto loader = New<ModelLoaderWQFML4>();
        const auto scene = New<StorageScene2>();
        try {
            loader->Load(Bytes(row.document), scene.Get(), 1);
            EXPECT_FALSE(row.tooMuch);
        } catch (const std::bad_alloc& failure) {
            EXPECT_TRUE(row.tooMuch);
            EXPECT_EQ(std::string_view(failure.what()),
                      "indices in the document ask for more entries than its size allows");
        }
        EXPECT_TRUE(loader->Load(Bytes(Root(Group(Part(1)))), New<StorageScene2>().Get(), 1)) << "it can go on";
    }
}

// One flexible element of many control points, and as many of one.
TEST(HostileModel, ReadsAndPlacesManyControlPointsAndFlexes) {
    constexpr int kCount = 100000;
    std::string parts;
    std::string steps;
    for (int i = 0; i < kCount; ++i) {
        parts += FlexPart(i, static_cast<std::uint64_t>(kCount - 1 - i));
        parts += Part(kCount + i, "flexRefID='" + std::to_string(kCount + i) + "' controlPoint='0'");
        steps += Step("", PartRef(i) + PartRef(kCount + i));
    }
    const ConvertedDocument document(Root(Group(parts) + Instruction(steps)));
    ASSERT_TRUE(document.succeeded);
    const StorageScene2::Part& part = *document->bricks[0]->parts[0];
    ASSERT_EQ(part.bones.Size(), std::size_t{kCount});
    EXPECT_EQ(part.bones[kCount - 1], document->rigidSystems[0].rigids[0]->bones[0]);
    EXPECT_EQ(document.loader->placedFlexes.Size(), std::size_t{kCount} + 1);
}

TEST(HostileModel, ReleasesDeepStepsThatBreakOff) {
    constexpr std::size_t kDepth = 200000;
    const std::string starts = Repeated("<Step>", kDepth);
    EXPECT_TRUE(ConvertedDocument(Root(Repeated("<a>", kDepth) + Repeated("</a>", kDepth))).succeeded);
    const LoadedScene broken("<WQFML versionMajor='4'><BuildingInstructions><BuildingInstruction>" + starts);
    EXPECT_EQ(Descriptions(*broken.loader), Words{"parserError"});
}

TEST(HostileModel, ReadsAMetadataValueInPiecesOfOneByte) {
    const LoadedScene loaded(Root("<Meta><E>" + Repeated("&#97;", 500000) + "</E></Meta>"));
    ASSERT_TRUE(loaded.succeeded);
    EXPECT_EQ(loaded->meta[0].value.Length(), 500000U);
}

}  // namespace
}  // namespace ZEMA::testing
