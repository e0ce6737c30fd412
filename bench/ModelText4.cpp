#include <algorithm>
#include <utility>

#include "bench/ModelText.h"
#include "bench/ModelWriter.h"

namespace bench {
namespace {

constexpr int kPartsInGroup = 4;

class Format4Writer : ModelWriter {
public:
    explicit Format4Writer(int partCount) : partCount_(partCount) {}

    std::string Write() {
        text_ =
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>\n"
            "<WQFML versionMajor=\"4\" versionMinor=\"0\" name=\"Town\">\n"
            "  <Meta>\n"
            "    <Application name=\"Builder\" versionMajor=\"2\" versionMinor=\"3\"/>\n"
            "    <Brand name=\"Town\"/>\n"
            "    <BrickSet version=\"264.1\"/>\n"
            "    <Author>Ada Lovelace</Author>\n"
            "    <Description lang=\"en\">A street of houses.</Description>\n"
            "  </Meta>\n"
            "  <Cameras>\n"
            "    <Camera refID=\"0\" fieldOfView=\"80\" distance=\"69.28\" ax=\"-0.6\" ay=\"0.8\" az=\"0\" "
            "angle=\"45\" "
            "tx=\"40\" ty=\"40\" tz=\"40\"/>\n"
            "  </Cameras>\n"
            "  <Scene cameraRefID=\"0\">\n"
            "    <Model name=\"Town\">\n";
        for (int group = 0; group * kPartsInGroup < partCount_; ++group) WriteGroup(group);
        WriteJoints();
        text_ += "    </Model>\n  </Scene>\n";
        WriteSteps(partCount_, "partRefID");
        text_ += "</WQFML>\n";
        return std::move(text_);
    }

private:
    void WriteGroup(int group) {
        Print("      <Group refID=\"%d\"", group);
        WritePlacement();
        text_ += ">\n";
        const int first = group * kPartsInGroup;
        for (int part = first; part < std::min(first + kPartsInGroup, partCount_); ++part) WritePart(part, group);
        text_ += "      </Group>\n";
    }

    void WritePart(int part, int group) {
        const unsigned design = Design();
        const unsigned material = Material();
        Print("        <Part refID=\"%d\" designID=\"%u\" materialID=\"%u\" itemNos=\"%u%02u\"", part, design, material,
              design, material);
        if (group % 10 == 1) Print(" assemblyRefID=\"%d\" assemblyID=\"%u\"", group, 3001U);
        if (group % 10 == 2) Print(" flexRefID=\"%d\" controlPoint=\"%d\"", group, part % kPartsInGroup);
        WritePlacement();
        text_ += "/>\n";
    }

    void WritePlacement() {
        Print(" ax=\"0\" ay=\"1\" az=\"0\" angle=\"%u\" tx=\"%.9g\" ty=\"%.9g\" tz=\"%.9g\"", Random(8) * 45, Place(),
              Place(), Place());
    }

    void WriteJoints() {
        for (int group = 0; (group + 1) * kPartsInGroup < partCount_; group += 10)
            Print(
                "      <Joint type=\"hinge\">\n"
                "        <GroupRef groupRef=\"%d\" ax=\"0\" ay=\"1\" az=\"0\" zx=\"0\" zy=\"0\" zz=\"1\" "
                "tx=\"%.9g\"/>\n"
                "        <GroupRef groupRef=\"%d\" ax=\"0\" ay=\"1\" az=\"0\" zx=\"0\" zy=\"0\" zz=\"1\"/>\n"
                "      </Joint>\n",
                group, Place(), group + 1);
    }

    int partCount_;
};

}  // namespace

std::string ModelTextOfFormat4(int partCount) {
    return Format4Writer(partCount).Write();
}

}  // namespace bench
