// The way from element to element: what is read where, and what is skipped; cameras, metadata and steps.
#include <gtest/gtest.h>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

Words NamesOf(const BasicArray<StorageScene::Model>& models) {
    Words names;
    for (const auto& model : models) names.push_back(Utf8(model.name));
    return names;
}

TEST(Format4Document, SkipsWhatItDoesNotKnow) {
    const std::string model = "<Model name='wrong'/>";
    for (const std::string& content :
         {"<Other>" + model + "<Scene>" + model + "</Scene></Other>", Root(Model("")),
          "<Scene><Other>" + model + "</Other></Scene>", "<scene>" + model + "</scene>", model}) {
        SCOPED_TRACE(content);
        const LoadedScene loaded(Root(content + Model("")));
        EXPECT_TRUE(loaded.succeeded);
        EXPECT_EQ(NamesOf(loaded->models), Words{"model"});
    }
}

TEST(Format4Document, SecondRootIsReadUnderAWrongOne) {
    const LoadedScene loaded("<WQFML versionMajor='5'>" + Root(Model("")) + "<Scene><Model name='x'/></Scene>" +
                             "<WQFML versionMajor='3'/></WQFML>");
    EXPECT_EQ(NamesOf(loaded->models), Words{"model"});
    EXPECT_EQ(Descriptions(*loaded.loader), (Words{"versionError expected Version 4 actual Version 5"}))
        << "what follows the second root is skipped";
}

TEST(Format4Document, ReadsCamerasInSectionsOfAnyOrderAndNumber) {
    const ConvertedDocument document(Root(
        "<Cameras>"
        "<Camera refID='1' name='\xC3\xA4' distance='2.5' fieldOfView='45' orthographic='true' tx='1' ty='2' tz='3'>"
        "<Camera refID='2' orthographic='TRUE'/><Other><Camera refID='3'/></Other></Camera>"
        "</Cameras><Scene cameraRefID='1'/><Cameras><Camera refID='1' name='again'/></Cameras>"
        "<Scene cameraRefID='1'><Model name='a'/><Model/></Scene>"));
    EXPECT_EQ(document.At("/rigidSystems"), "[{},{}]");
    EXPECT_EQ(document.At("/cameras"), R"([{"distance":2.5,"fieldOfView":45,"name":"ä","orthographic":true,)"
                                       R"("transformation":[1,0,0,0,0,1,0,0,0,0,1,0,1,2,3,1]},{},{"name":"again"}])")
        << "one in a camera counts, one below an unknown element does not";
    EXPECT_EQ(document.At("/bricksCamera"), "2") << "the later camera of a number is meant";
}

TEST(Format4Document, GathersMetadataTextUpToTheFirstElement) {
    const std::pair<const char*, const char*> rows[] = {
        {"<E> a\n b </E> between <F>f</F>", R"([{"name":"E","value":" a\n b "},{"name":"F","value":"f"}])"},
        {"<E>a<!-- x -->&amp;<![CDATA[<b>]]>&#228;</E>", R"([{"name":"E","value":"a&<b>ä"}])"},
        {"<E>a<x>b<y>c</y></x>d<z/>e</E> <F>f</F>", R"([{"name":"E","value":"a"},{"name":"F","value":"f"}])"},
        {"<E><x>b</x>c</E>", R"([{"name":"E"}])"},
        // Names and attributes are ASCII, or empty.
        {"<\xC3\xA4 k\xC3\xA4='v' k='\xC3\xA4' c='1'>\xC3\xA4</\xC3\xA4>",
         R"([{"attributes":[{"value":"v"},{"key":"k"},{"key":"c","value":"1"}],"value":"ä"}])"},
    };
    for (const auto& [entries, meta] : rows) {
        SCOPED_TRACE(entries);
        EXPECT_EQ(ConvertedDocument(Root("<Meta>" + std::string(entries) + "</Meta>")).At("/meta"), meta);
    }
    const LoadedScene cut("<WQFML versionMajor='4'><Meta><E>text");
    EXPECT_FALSE(cut.succeeded);
    EXPECT_EQ(Utf8(cut->meta[0].value), "text") << "what is there of an entry that breaks off is kept";
}

TEST(Format4Document, NestsSteps) {
    const ConvertedDocument document(
        Root(Group(Part(1)) +
             Instruction("<Other>" + Step("") + "</Other>" +
                         Step("name='\xC3\xA4'", "<Other>" + Step("") + "</Other>" + Step("") +
                                                     "<PartRef partRefID='1'>" + Step("name='b'") + "</PartRef>")) +
             Instruction("")));
    EXPECT_EQ(document.At("/buildingInstructions"),
              R"([{"events":[{"events":[{},{"name":"b"},{"part":[0,0],"type":2}],"name":"ä"}],"name":"bi"},)"
              R"({"name":"bi"}])")
        << "a step in a part reference counts";
}

}  // namespace
}  // namespace ZEMA::testing
