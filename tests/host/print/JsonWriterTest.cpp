#include "host/print/JsonWriter.h"

#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>

#include <cmath>

#include "platform/Foundation/CFPointer.h"

namespace ZEMA::testing {

TEST(JsonWriter, WritesEachValueAsJsonHasIt) {
    const std::pair<float, const char*> floats[] = {
        {0.1F, "0.1"},
        {-0.0F, "-0"},
        {16777216, "16777216"},
        {1e-45F, "1e-45"},
        {3.4028235e38F, "3.4028235e+38"},
        {1 / 3.0F, "0.33333334"},
        {NAN, "null"},
        {-INFINITY, "null"},
    };
    for (const auto& [number, text] : floats) {
        EXPECT_EQ(JsonOf([&, value = number](JsonWriter& json) { json.Float(value); }), text);
    }
    const std::string all = std::string("\0\b\t\n\f\r\x1F \"/\\\x7F", 12) + "é\xFF";
    EXPECT_EQ(JsonText({Value::Dictionary{{all, {Value::List{{all}, {std::int64_t{-7}}, {1 / 3.0}, {false}}}},
                                          {"", {Value::List{}}}}}),
              "{\"\\u0000\\b\\t\\n\\f\\r\\u001f \\\"/\\\\\x7Fé\xEF\xBF\xBD\":[\"\\u0000\\b\\t\\n\\f\\r\\u001f "
              "\\\"/\\\\\x7Fé\xEF\xBF\xBD\","
              "-7,0.3333333333333333,false],\"\":[]}");
}

TEST(JsonWriter, HandsPiecesOnAndStopsAtAFailure) {
    std::size_t pieces = 0;
    JsonWriter json([&](std::string_view piece) {
        EXPECT_GE(piece.size(), 65536u);
        return ++pieces < 3;
    });
    json.BeginArray();
    for (int i = 0; i < 1000; ++i) json.Text(std::string(1000, 'a'));
    json.EndArray();
    EXPECT_FALSE(json.Finish());
    EXPECT_EQ(pieces, 3u);
}

// A plug-in may write what no attribute of ours is.
TEST(Value, TakesWhatThePlatformHasAndLeavesTheRestOut) {
    const Foundation::CFPointer<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    const double half = 0.5;
    const Foundation::CFPointer<CFNumberRef> number(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &half));
    CFDictionaryAddValue(dictionary.Get(), CFSTR("z"), kCFBooleanTrue);
    CFDictionaryAddValue(dictionary.Get(), CFSTR("b"), number.Get());
    CFDictionaryAddValue(dictionary.Get(), CFSTR("a"), kMDImporterInterfaceID);
    CFDictionaryAddValue(dictionary.Get(), number.Get(), CFSTR("no key"));
    EXPECT_EQ(JsonText(ValueOf(dictionary.Get())), R"({"a":"","b":0.5,"z":true})");
}

}  // namespace ZEMA::testing
