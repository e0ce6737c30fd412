#include "bench/ModelText.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <random>

namespace bench {
namespace {

[[gnu::format(printf, 2, 3)]] void Print(std::string& text, const char* format, ...) {
    char line[512];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    text.append(line, static_cast<std::size_t>(length));
}

class Writer {
public:
    explicit Writer(int brickCount) : brickCount_(brickCount) {}

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
        WriteSteps();
        text_ += "</WQFML>\n";
        return std::move(text_);
    }

private:
    void WriteBricks() {
        text_ += "  <Bricks cameraRef=\"0\">\n";
        for (int brick = 0; brick < brickCount_; ++brick) {
            const unsigned design = 3000 + Random(200) * 7;
            const unsigned material = 1 + Random(30);
            Print(text_, "    <Brick refID=\"%d\" designID=\"%u\" itemNos=\"%u%02u\">\n", brick, design, design,
                  material);
            Print(text_, "      <Part refID=\"%d\" designID=\"%u\" materials=\"%u\">\n", brick, design, material);
            Print(text_, "        <Bone refID=\"%d\" transformation=\"", brick);
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
        Print(text_, "%.8g,0,%.8g,0,1,0,%.8g,0,%.8g,", c, -s, s, c);
        Print(text_, "%.9g,%.9g,%.9g", Place(), Place(), Place());
    }

    void WriteRigids() {
        text_ += "  <RigidSystems>\n    <RigidSystem>\n";
        for (int first = 0; first < brickCount_; first += 4) {
            Print(text_, "      <Rigid refID=\"%d\" transformation=\"", first / 4);
            WriteTransformation();
            Print(text_, "\" boneRefs=\"%d", first);
            for (int bone = first + 1; bone < first + 4 && bone < brickCount_; ++bone) Print(text_, ",%d", bone);
            text_ += "\"/>\n";
        }
        text_ += "    </RigidSystem>\n  </RigidSystems>\n";
    }

    void WriteSteps() {
        text_ += "  <BuildingInstructions>\n    <BuildingInstruction name=\"BuildingGuide1\">\n";
        for (int first = 0; first < brickCount_; first += 10) {
            Print(text_, "      <Step name=\"Step%d\">\n", first / 10 + 1);
            for (int part = first; part < first + 10 && part < brickCount_; ++part)
                Print(text_, "        <PartRef partRef=\"%d\"/>\n", part);
            text_ += "      </Step>\n";
        }
        text_ += "    </BuildingInstruction>\n  </BuildingInstructions>\n";
    }

    unsigned Random(unsigned below) { return static_cast<unsigned>(random_() % below); }
    double Place() { return (static_cast<double>(Random(20000)) - 10000.0) * 0.00999999978; }

    int brickCount_;
    std::string text_;
    std::minstd_rand random_{42};
};

}  // namespace

std::string ModelText(int brickCount) {
    return Writer(brickCount).Write();
}

}  // namespace bench
