#include "bench/ModelWriter.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace bench {

void ModelWriter::Print(const char* format, ...) {
    char line[512];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    text_.append(line, static_cast<std::size_t>(length));
}

void ModelWriter::WriteSteps(int partCount, const char* reference) {
    constexpr int kPartsInStep = 10;
    text_ += "  <BuildingInstructions>\n    <BuildingInstruction name=\"BuildingGuide1\">\n";
    for (int first = 0; first < partCount; first += kPartsInStep) {
        Print("      <Step name=\"Step%d\">\n", first / kPartsInStep + 1);
        for (int part = first; part < std::min(first + kPartsInStep, partCount); ++part)
            Print("        <PartRef %s=\"%d\"/>\n", reference, part);
        text_ += "      </Step>\n";
    }
    text_ += "    </BuildingInstruction>\n  </BuildingInstructions>\n";
}

}  // namespace bench
