#include <gtest/gtest.h>

#include "tests/tools/Process.h"

namespace ZEMA::testing {

TEST(CommandLine, TellsHowToUseIt) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--help"}, {"-h"}, {"help"}, {"--version"}}) {
        const Result result = Wqf(arguments);
        EXPECT_EQ(result.exit, 0) << arguments[0];
        EXPECT_NE(result.out.find("wqf"), std::string::npos);
        EXPECT_EQ(result.err, "");
    }
    EXPECT_EQ(Wqf({"help", "import"}).out, Wqf({"import", "--help"}).out);
    EXPECT_NE(Wqf({"help", "import"}).out.find("--files0-from FILE"), std::string::npos);
}

TEST(CommandLine, RefusesWhatItDoesNotKnow) {
    const struct {
        std::vector<std::string> arguments;
        const char* problem;
    } rows[] = {
        {{}, "wqf: no command is given\n"},
        {{"impart"}, "wqf: there is no command 'impart'\n"},
        {{"help", "impart"}, "wqf: there is no command 'impart'\n"},
        {{"--fast"}, "wqf: there is no option '--fast'\n"},
        {{"import"}, "wqf: no PATH is given\n"},
        {{"import", "--"}, "wqf: no PATH is given\n"},
        {{"import", "--fast", "a.wqf"}, "wqf: there is no option '--fast'\n"},
        {{"import", "--format", "yaml", "a.wqf"},
         "wqf: --format: 'yaml' is none of text, json, ndjson, plist, csv, paths\n"},
        {{"import", "a.wqf", "--bundle"}, "wqf: --bundle: 1 required DIR missing\n"},
        {{"import", "--files0-from", "-", "a.wqf"}, "wqf: --files0-from and PATHs exclude each other\n"},
        {{"import", "--files0-from", "/no/list"}, "wqf: /no/list: no such file\n"},
        {{"import", "--bundle", "/no/bundle", "a.wqf"}, "wqf: /no/bundle: there is no such bundle\n"},
        {{"import", "--bundle", "/", "a.wqf"}, "wqf: //Contents/Info.plist: no such file\n"},
        {{"check"}, "wqf: no PATH is given\n"},
        {{"check", "--options", "-1", "a"}, "wqf: --options: '-1' is no number of 32 bits\n"},
        {{"check", "--format", "plist", "a"}, "wqf: --format: 'plist' is none of text, json, ndjson\n"},
        {{"scene"}, "wqf: no PATH is given\n"},
        {{"scene", "a", "b"}, "wqf: only one PATH is taken\n"},
        {{"scene", "--options", "4294967296", "a"}, "wqf: --options: '4294967296' is no number of 32 bits\n"},
        {{"handler"}, "wqf: no INDEXER is given\n"},
        {{"handler", "tracker"}, "wqf: INDEXER: 'tracker' is none of recoll, kfilemetadata\n"},
        {{"setup", "kfilemetadata"}, "wqf: INDEXER: 'kfilemetadata' is none of recoll\n"},
        {{"catalogue", "a"}, "wqf: takes no argument, as 'a'\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.problem);
        const Result result = Wqf(row.arguments);
        EXPECT_EQ(result.exit, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.substr(0, result.err.find('\n') + 1), row.problem);
    }
}

TEST(CommandLine, SaysWhyThereIsNoDocument) {
    for (const char* command : {"import", "check"}) {
        for (const std::string path : {"gone", ""}) {
            const Result result = Wqf({command, path});
            EXPECT_EQ(result.exit, 1);
            EXPECT_EQ(result.err, "wqf: " + path + ": no such file\n") << command;
        }
    }
    // Nothing may be opened under the number of a standard descriptor that is closed.
    EXPECT_EQ(Shell("\"$WQF\" check /proc/self/fd/0 <&-").err,
              "wqf: /proc/self/fd/0: is a device, not a regular file\n");
}

}  // namespace ZEMA::testing
