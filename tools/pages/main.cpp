// wqf_pages SOURCES FOLDER: writes the manual pages and the completions into FOLDER. What a page says beside the
// options stands in SOURCES under the page's name.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tools/pages/Completions.h"
#include "tools/pages/ManualPage.h"

namespace {

// Empty where there is no such file: a command needs no more than its options.
std::string Read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool Write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) std::fprintf(stderr, "%s: cannot be written\n", path.c_str());
    return file.good();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const std::filesystem::path sources = argv[1];
    const std::filesystem::path folder = argv[2];
    std::filesystem::create_directories(folder);
    const std::vector<ZEMA::CommandDescription> commands = ZEMA::DescribeCommands();
    bool written = Write(folder / "wqf", ZEMA::BashCompletion(commands)) &&
                   Write(folder / "_wqf", ZEMA::ZshCompletion(commands)) &&
                   Write(folder / "wqf.fish", ZEMA::FishCompletion(commands)) &&
                   Write(folder / "wqf.1.scd", ZEMA::ProgramPage(commands, Read(sources / "wqf.1.scd")));
    for (const ZEMA::CommandDescription& command : commands) {
        const std::string name = "wqf-" + command.name + ".1.scd";
        written = written && Write(folder / name, ZEMA::CommandPage(command, Read(sources / name)));
    }
    return written ? 0 : 1;
}
