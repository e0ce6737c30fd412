// Why a document is not imported, in words.
#include "host/documents/DocumentCheck.h"

#include <gtest/gtest.h>

#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

using std::string_literals::operator""s;

const std::string kModel = R"(<WQFML versionMajor="5"><Bricks/></WQFML>)";

// With something wrong in its second member that can be mended.
std::string MendableArchive() {
    return ArchiveBuilder()
        .Stored("a", "")
        .Add({.name = "IMAGE100.WQFML", .contents = kModel, .sums = ArchiveMember::Sums::Both})
        .Bytes();
}

BuiltArchive Archive() {
    return ArchiveBuilder().Deflated("Image100.wqfml", kModel).Build();
}

std::string Format(const std::string& version, const std::string& rest) {
    return "<WQFML versionMajor='" + version + "'>" + rest;
}

}  // namespace

TEST(WhyNotImported, IsSaidInASentence) {
    const TemporaryFolder folder;
    const std::string unreadable = " (pathError path file" + folder.Path().string() + "/a/IMAGE100.WQFML)";
    const std::string withoutModel = "it is an archive without a model: ";
    const std::string part = "<Bricks><Brick refID='1' designID='1'><Part designID='1' materials='1' ";
    std::string attributes;
    for (int i = 0; i < 513; ++i) attributes += "\n<!ATTLIST WQFML a CDATA #IMPLIED>";
    BuiltArchive method = Archive();
    method.Set16(method.localHeaders[0] + 8, 9).Set16(method.centralHeaders[0] + 10, 9);
    BuiltArchive encrypted = Archive();
    encrypted.Set16(encrypted.localHeaders[0] + 6, 1).Set16(encrypted.centralHeaders[0] + 8, 1);
    BuiltArchive checksum = ArchiveBuilder().Stored("IMAGE100.WQFML", "<a").Build();
    checksum.bytes[checksum.localHeaders[0] + 30 + 14] = '?';
    BuiltArchive split = Archive();
    split.Set16(split.endRecord + 4, 1);
    const struct {
        std::string bytes;
        std::string reason;
    } rows[] = {
        {"", "it is empty"},
        {"hello", "it is neither a ZIP archive nor a model (parserError)"},
        {"\x1F\x8B", "it is a gzip file, neither a ZIP archive nor a model (parserError)"},
        {"\0\0"s, "it holds nothing but zero bytes (parserError)"},
        {"<svg/>",
         "it is XML, but no model: its root element is 'svg', not 'WQFML'"
         " (unknown error detail missingWQFMLTag)"},
        {"<" + std::string(50, 'a') + ">", "it is XML, but no model: its root element is '" + std::string(40, 'a') +
                                               "...', not 'WQFML' (unknown error detail missingWQFMLTag)"},
        // What the other format's loader says is not the matter.
        {Format("5", "\n<Bri"), "it is malformed in line 2, column 1: it ends too early (parserError)"},
        {Format("4", "\n <\xC3\xA9></a>"), "it is malformed in line 2, column 7: mismatched tag (parserError)"},
        {"\n <WQFML versionMajor='5' a='1' a='2'/>",
         "it is malformed in line 2, column 32: duplicate attribute (parserError)"},
        {"\xEF\xBB\xBF<!-- ", "it is malformed in line 1, column 2: it ends too early (parserError)"},
        {"<!DOCTYPE WQFML [" + attributes + "]><WQFML/>",
         "it is malformed in line 514, column 25: its declarations stand for more than a document may come to"
         " (parserError)"},
        {Format("6' versionMinor='1", "</WQFML>"),
         "it is of format '6.1'; formats 5 and 4 are read (versionError expected Version 5 actual Version 6.1)"},
        {"<WQFML versionMajor='x' versionMinor='0'/>",
         "it is of format 'x'; formats 5 and 4 are read (versionError expected Version 5 actual Version 0)"},
        {"<WQFML/>", "it does not say of which format it is (versionError expected Version 5 actual Version 0)"},
        {Format("5", "</WQFML>"), "the model in it is not complete"},
        {Format("5", "<Bricks><Brick/><Brick/></Bricks></WQFML>"),
         "a brick in it has no design, or no number of its own (brickError error detail missingRefID, and 1 more)"},
        {Format("5", "<Cameras><Camera/></Cameras><Bricks/></WQFML>"),
         "a camera in it has no number of its own, or one that is named is not there"
         " (cameraError error detail missingRefID)"},
        {Format("5", part + "/></Brick></Bricks></WQFML>"),
         "a part in it lacks a design, a material or a number of its own, or has a wrong one"
         " (partError error detail missingRefID)"},
        {Format("5", part + "refID='1'><Bone/></Part></Brick></Bricks></WQFML>"),
         "a bone in it has no number of its own (boneError error detail missingRefID)"},
        {Format("5", "<Bricks/><RigidSystems><RigidSystem><Rigid/></RigidSystem></RigidSystems></WQFML>"),
         "a rigid in it has no number of its own (rigidError error detail missingRefID)"},
        {Format("5", "<Bricks/><RigidSystems><RigidSystem><Joint/></RigidSystem></RigidSystems></WQFML>"),
         "a joint in it is of no known type, or joins what is not there (jointError)"},
        {Format("4",
                "<BuildingInstructions><BuildingInstruction><Step><PartRef/></Step></BuildingInstruction>"
                "</BuildingInstructions></WQFML>"),
         "its building instructions name a part or a camera that is not there (biError error detail nonExistingPart)"},
        {ArchiveBuilder().Bytes(), withoutModel + "there is no IMAGE100.WQFML in it" + unreadable},
        {ArchiveBuilder().Stored("castle/IMAGE100.WQFML", kModel).Bytes(),
         withoutModel + "IMAGE100.WQFML lies in its folder 'castle' and not at the top" + unreadable},
        {ArchiveBuilder().Stored("IMAGE100.WQFML", "%PDF-").Bytes(),
         "'IMAGE100.WQFML' in it: it is a PDF document, no model (parserError)"},
        {ArchiveBuilder().Stored("a", "").Comment("PK\5\6" + std::string(18, 'c')).Bytes(),
         "there is a second end record behind its own; 'wqf mend --drop' rewrites it (parserError)"},
        {ArchiveBuilder().Stored("IMAGE100.WQFML", "").Bytes(),
         "'IMAGE100.WQFML' in it: it is empty (unknown error detail empty)"},
        {MendableArchive(),
         "'IMAGE100.WQFML' in it: it has its sizes beside flag bit 3; 'wqf mend' rewrites it" + unreadable},
        {method.bytes, "'Image100.wqfml' in it: it is packed by Deflate64" + unreadable},
        {encrypted.bytes, "'Image100.wqfml' in it: it is encrypted" + unreadable},
        {checksum.bytes, "'IMAGE100.WQFML' in it: it is damaged: its checksum is wrong (parserError)"},
        {Archive().bytes.substr(0, 60), "it was cut short: its directory is missing (parserError)"},
        {"in front" + Archive().bytes,
         "its directory is not where its end record says; 'wqf mend' rewrites it (parserError)"},
        {split.bytes, "it is one part of an archive that was split (parserError)"},
    };
    for (const auto& row : rows) {
        const std::string path = folder.Write("a", row.bytes);
        EXPECT_EQ(WhyNotImported(path).text, row.reason);
        EXPECT_EQ(folder.Read("a"), row.bytes);
    }
}

TEST(DocumentCheck, TellsOfBothLoadersTheClaimedOneFirst) {
    const TemporaryFolder folder;
    const DocumentCheck check = CheckDocument(
        folder.Write("a", Format("4",
                                 "<Scene><Model><Group><Part/><Part refID='1' materialID='1' flexRefID='1' "
                                 "controlPoint='4294967294'/></Group></Model></Scene></WQFML>")));
    EXPECT_EQ(CheckText("a\n", check),
              "a\\u000A: not loaded\n"
              "  indices in the document ask for more entries than its size allows\n"
              "  format 4: partError error detail missingRefID\n"
              "  format 4: indices in the document ask for more entries than its size allows\n"
              "  format 5: versionError expected Version 5 actual Version 4\n");
    EXPECT_EQ(JsonOf([&](JsonWriter& json) { WriteCheck("a", check, json); }),
              R"({"path":"a","loaded":false,"version":null,"attempts":[{"format":5,"loaded":false,"errorMask":2,)"
              R"("errors":["versionError expected Version 5 actual Version 4"]},{"format":4,"loaded":false,)"
              R"("errorMask":32,"errors":["partError error detail missingRefID"],)"
              R"("reason":"indices in the document ask for more entries than its size allows"}],)"
              R"("reason":"indices in the document ask for more entries than its size allows"})");
}

TEST(WhyNotImported, TellsOfWhatLiesInArchives) {
    const TemporaryFolder folder;
    const std::string inner = ArchiveBuilder().Deflated("IMAGE100.WQFML", "<a>").Bytes();
    // Mending the outer archive, which is possible, would not help the one in it.
    const std::string path = folder.Write("a.zip", ArchiveBuilder()
                                                       .Stored("b", inner)
                                                       .Stored("c", "")
                                                       .Stored("m", MendableArchive())
                                                       .Add({.name = "n", .sums = ArchiveMember::Sums::Both})
                                                       .Bytes());
    const std::string whole = "file" + folder.Path().string() + "/a/";
    EXPECT_EQ(WhyNotImported(path + "/b").text,
              "'IMAGE100.WQFML' in it: it is XML, but no model: its root element is 'a', not 'WQFML'"
              " (unknown error detail missingWQFMLTag)");
    EXPECT_EQ(WhyNotImported(path + "/c").text, "it is empty");
    EXPECT_EQ(WhyNotImported(path + "/m").text,
              "'IMAGE100.WQFML' in it: it has its sizes beside flag bit 3"
              " (pathError path " +
                  whole + "m/IMAGE100.WQFML)");
    EXPECT_EQ(WhyNotImported(path + "/d").text, "no such file (pathError path " + whole + "d)");
}

}  // namespace ZEMA::testing
