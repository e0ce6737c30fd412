// What both writers of model texts need: lines with numbers in them, building steps, and chance that repeats.
#pragma once

#include <random>
#include <string>

namespace bench {

class ModelWriter {
protected:
    [[gnu::format(printf, 2, 3)]] void Print(const char* format, ...);

    // A step for every ten parts; the two markups name the reference to a part differently.
    void WriteSteps(int partCount, const char* reference);

    unsigned Random(unsigned below) { return static_cast<unsigned>(random_() % below); }
    unsigned Design() { return 3000 + Random(200) * 7; }
    unsigned Material() { return 1 + Random(30); }
    // A coordinate as a program writes it that holds it as a float.
    double Place() { return (static_cast<double>(Random(20000)) - 10000.0) * 0.00999999978; }

    std::string text_;

private:
    std::minstd_rand random_{42};
};

}  // namespace bench
