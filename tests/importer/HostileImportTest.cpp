// Documents made to exhaust the stack, the memory or the patience of whoever indexes a disk.

#include <gtest/gtest.h>

#include <ctime>

#include "host/documents/DocumentRecord.h"
#include "host/plugin/PluginHost.h"
#include "tests/importer/Attributes.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

constexpr int kDeep = 200000;
constexpr int kMany = 100000;

std::string Repeated(int count, const std::string& before, const std::string& after) {
    std::string text;
    for (int i = 0; i < count; ++i) text += before + (after.empty() ? "" : std::to_string(i) + after);
    return text;
}

std::string Nested(const std::string& start, const std::string& end) {
    return Repeated(kDeep, start, "") + Repeated(kDeep, end, "");
}

// In a model that lacks nothing.
std::string Complete(const std::string& content) {
    return Model5(content + "<Bricks/>");
}

std::string ManyBricks() {
    std::string bricks;
    for (int i = 1; i <= 2 * kMany; ++i) bricks += Brick5(std::to_string(i), std::to_string(1000000 + i));
    return Model5("<Bricks>" + bricks + "</Bricks>");
}

std::size_t CountOf(const DocumentRecord& record, const char* name) {
    const Value* const value = Find(record.attributes, name);
    return value == nullptr || value->AsList() == nullptr ? 0 : value->AsList()->size();
}

}  // namespace

// Anything that looks through a list for each of its elements takes minutes here.
TEST(HostileImport, EndsInTimeAndInOrder) {
    const struct {
        const char* what;
        std::string model;
        bool imported;
        const char* list;  // an attribute
        std::size_t count;
    } rows[] = {
        {"elements nested 200,000 deep where they mean nothing", Complete(Nested("<a>", "</a>")), true, "", 0},
        {"groups nested 200,000 deep",
         Complete("<GroupSystems><GroupSystem>" + Nested("<Group>", "</Group>") + "</GroupSystem></GroupSystems>"),
         true, "", 0},
        {"a document that never closes what it opens", Complete(Repeated(kDeep, "<a>", "")), false, "", 0},
        {"100,000 authors", Complete("<Meta>" + Repeated(kMany, "<Author name=\"N", "\"/>") + "</Meta>"), true,
         "kMDItemAuthors", kMany},
        {"100,000 attributes on one element",
         Complete("<Meta><Application " + Repeated(kMany, "n", "=\"\" ") + "/></Meta>"), true, "kMDItemCreator", 0},
        {"100,000 blank lines", Complete("<Meta><Description>" + std::string(kMany, '\n') + "</Description></Meta>"),
         true, "kMDItemDescription", 0},
        {"200,000 bricks of as many designs", ManyBricks(), true, "com_zema_wqf_listofbricks", 2 * kMany},
    };
    std::string problem;
    const std::unique_ptr<PluginHost> host = PluginHost::Load(ZEMA_BUNDLE, problem);
    ASSERT_TRUE(host) << problem;
    const TemporaryFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const std::clock_t start = std::clock();
        const std::string path = folder.Write("a.wqf", ArchiveBuilder().Deflated("IMAGE100.WQFML", row.model).Bytes());
        const DocumentRecord record = ImportDocument(*host, {path, {}});
        EXPECT_EQ(record.imported, row.imported) << record.error;
        EXPECT_EQ(CountOf(record, row.list), row.count);
        EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 30);  // of the processor's time, whatever else it does
    }
}

}  // namespace ZEMA::testing
