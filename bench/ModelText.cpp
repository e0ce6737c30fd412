// Prints the text of a model: model_text FORMAT BRICKS.
#include "bench/ModelText.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: model_text 4|5 BRICKS\n";
        return 2;
    }
    const int bricks = std::atoi(arguments[2]);
    std::cout << (std::string_view(arguments[1]) == "4" ? bench::ModelTextOfFormat4(bricks)
                                                        : bench::ModelTextOfFormat5(bricks));
    return std::cout.flush() ? 0 : 1;
}
