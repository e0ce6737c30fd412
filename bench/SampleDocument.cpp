#include "bench/SampleDocument.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include "bench/ModelText.h"

namespace bench {

SampleDocument::SampleDocument(int format, int brickCount) {
    std::string pattern = (std::filesystem::temp_directory_path() / "wqf-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = pattern;
    path_ = folder_ / "model.wqf";
    const std::filesystem::path member = folder_ / "IMAGE100.WQFML";
    std::ofstream(member, std::ios::binary)
        << (format == 4 ? ModelTextOfFormat4(brickCount) : ModelTextOfFormat5(brickCount));
    const std::string command = "zip -q -j '" + path_.string() + "' '" + member.string() + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("zip failed");
}

SampleDocument::~SampleDocument() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

}  // namespace bench
