// Does one piece of work once more after having done it once, inside the function MeasuredWork, for callgrind to count.

#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string_view>

#include "bench/Floor.h"
#include "bench/Import.h"
#include "bench/SampleDocument.h"

extern "C" [[gnu::noinline]] void MeasuredWork(void (*work)(const std::filesystem::path&),
                                               const std::filesystem::path& path) {
    work(path);
}

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: import_once floor|import FORMAT BRICKS\n";
        return 2;
    }
    try {
        const auto work = std::string_view(arguments[1]) == "floor" ? bench::RunFloor : bench::RunImport;
        const bench::SampleDocument document(std::atoi(arguments[2]), std::atoi(arguments[3]));
        work(document.Path());
        MeasuredWork(work, document.Path());
    } catch (const std::exception& error) {
        std::cerr << "import_once: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
