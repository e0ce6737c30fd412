#include "bench/ModelText.h"

#include <cmath>
#include <utility>

#include "bench/ModelWriter.h"

namespace bench {
namespace {

class Format5Writer : ModelWriter {
public:
    explicit Format5Writer(int brickCount) : brickCount_(brickCount) {}

    std::string Write() {
        text_ =
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>\n"
            "<WQFML versionMajor=\"5\" versionMinor=\"0\" name=\"Town\">\n"
            "  <Meta>\n"
            "    <Application name=\"Builder\" versionMajor=\"4\" versionMinor=\"3\"/>\n"
            "    <Brand name=\"Town\"/>\n"
            "    <BrickSet version=\"1564.2\"/>\n"
            "    <Author name=\"Ada Lovelace\"/>\n"
            "    <Description lang=\"en\">A street of houses.</Description>\n"
            "  </Meta>\n"
            "  <Cameras>\n"
            "    <Camera refID=\"0\" fieldOfView=\"80\" distance=\"69.28\" "
            "transformation=\"0.7,0,-0.7,-0.4,0.8,-0.4,0.5,0.5,0.5,40,40,40\"/>\n"
            "  </Cameras>\n";
        WriteBricks();
        WriteRigids();
        WriteSteps(brickCount_, "partRef");
        text_ += "</WQFML>\n";
        return std::move(text_);
    }

private:
    void WriteBricks() {
        text_ += "  <Bricks cameraRef=\"0\">\n";
        for (int brick = 0; brick < brickCount_; ++brick) {
            const unsigned design = Design();
            const unsigned material = Material();
            Print("    <Brick refID=\"%d\" designID=\"%u\" itemNos=\"%u%02u\">\n", brick, design, design, material);
            Print("      <Part refID=\"%d\" designID=\"%u\" materials=\"%u\">\n", brick, design, material);
            Print("        <Bone refID=\"%d\" transformation=\"", brick);
            WriteTransformation();
            text_ += "\">\n        </Bone>\n      </Part>\n    </Brick>\n";
        }
        text_ += "  </Bricks>\n";
    }

    // A turn about the vertical axis, written as float values are, and a place in space.
    void WriteTransformation() {
        const float angle = static_cast<float>(Random(8)) * 0.7853982F;
        const double s = static_cast<double>(std::sin(angle));
        const double c = static_cast<double>(std::cos(angle));
        Print("%.8g,0,%.8g,0,1,0,%.8g,0,%.8g,", c, -s, s, c);
        Print("%.9g,%.9g,%.9g", Place(), Place(), Place());
    }

    void WriteRigids() {
        text_ += "  <RigidSystems>\n    <RigidSystem>\n";
        for (int first = 0; first < brickCount_; first += 4) {
            Print("      <Rigid refID=\"%d\" transformation=\"", first / 4);
            WriteTransformation();
            Print("\" boneRefs=\"%d", first);
            for (int bone = first + 1; bone < first + 4 && bone < brickCount_; ++bone) Print(",%d", bone);
            text_ += "\"/>\n";
        }
        text_ += "    </RigidSystem>\n  </RigidSystems>\n";
    }

    int brickCount_;
};

}  // namespace

std::string ModelTextOfFormat5(int brickCount) {
    return Format5Writer(brickCount).Write();
}

}  // namespace bench
