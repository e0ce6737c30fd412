// What indexers are answered, by the bytes of their protocols.

#include <gtest/gtest.h>

#include <sstream>

#include "host/handlers/KFileMetaDataHandler.h"
#include "host/handlers/RecollHandler.h"

namespace ZEMA::testing {

namespace {

// Documents by their paths; there is nothing anywhere else.
DocumentRecord ReadShelf(const std::string& path) {
    DocumentRecord record{path, true, {}, ""};
    const auto text = [](const char* value) { return Value{std::string(value)}; };
    if (path == "/shelf/full.wqf") {
        record.attributes = {
            {"kMDItemVersion", text("5")},
            {"kMDItemCreator", text("Builder 4.2")},
            {"kMDItemDescription", {Value::Dictionary{{"de", text("Ein Tor\nmit Turm")}, {"en", text("<b> & \"c\"")}}}},
            {"kMDItemAuthors", {Value::List{text("Ada Lovelace"), text("Grete Müller")}}},
            {"kMDItemKeywords", {Value::List{text("R&D"), text("Harbour")}}},
            {"com_zema_wqf_numberofbricks", {std::int64_t{3}}},
            {"com_zema_wqf_listofbricks", {Value::List{text("4100"), text("42")}}},
        };
    } else if (path == "/shelf/bare.part.wqfml" || path == "/shelf/\xE9.wqf") {
        record.attributes = {{"kMDItemVersion", text("4")}, {"com_zema_wqf_numberofbricks", {std::int64_t{0}}}};
    } else {
        record.imported = false;
        record.error = "no such \"file\": \xFF";
    }
    return record;
}

std::string Item(const std::string& name, const std::string& value) {
    return name + ": " + std::to_string(value.size()) + "\n" + value;
}

struct Served {
    std::string answers;
    std::string failure;
};

Served ServeAll(const std::string& questions) {
    Served served;
    std::istringstream input(questions);
    const auto write = [&served](std::string_view answer) {
        served.answers += answer;
        return true;
    };
    served.failure = ServeRecoll(input, write, ReadShelf).text;
    return served;
}

constexpr const char* kNone = "Fileerror: 0\n\n";

std::string PageAnswer(const std::string& head, const std::string& body) {
    const std::string page = "<html><head>\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">\n" +
                             head + "</head><body><pre>\n" + body + "</pre></body></html>\n";
    return Item("Document", page) + "Eofnext: 0\n\n";
}

const std::string kBarePage = "<meta name=\"wqfversion\" content=\"4\">\n<meta name=\"wqfbricks\" content=\"0\">\n";

}  // namespace

TEST(RecollHandler, AnswersEveryQuestion) {
    const std::string full = PageAnswer(
        "<title>Ein Tor</title>\n<meta name=\"author\" content=\"Ada Lovelace\">\n"
        "<meta name=\"author\" content=\"Grete Müller\">\n<meta name=\"keywords\" content=\"R&amp;D\">\n"
        "<meta name=\"keywords\" content=\"Harbour\">\n<meta name=\"wqfcreator\" content=\"Builder 4.2\">\n"
        "<meta name=\"wqfversion\" content=\"5\">\n<meta name=\"wqfbricks\" content=\"3\">\n"
        "<meta name=\"wqfdesign\" content=\"4100\">\n<meta name=\"wqfdesign\" content=\"42\">\n",
        "Ein Tor\nmit Turm\n&lt;b&gt; &amp; &quot;c&quot;\n");
    const struct {
        const char* what;
        std::string questions;
        std::string answers;
    } rows[] = {
        {"nothing is asked", "", ""},
        {"a document with everything", Item("Filename", "/shelf/full.wqf") + "\n", full},
        {"one without a description has its file's name for a title",
         Item("filename", "/shelf/bare.part.wqfml") + Item("mimetype", "a/b") + "\n",
         PageAnswer("<title>bare.part</title>\n" + kBarePage, "")},
        {"a name that is not UTF-8 does not spoil the page", Item("FILENAME", "/shelf/\xE9.wqf") + "\n",
         PageAnswer("<title>\xEF\xBF\xBD</title>\n" + kBarePage, "")},
        {"one that is not there, and then one that is",
         Item("Filename", "/a\n\nb") + "\n" + Item("dflincs", "") + Item("Filename", "/shelf/full.wqf") + "\n",
         kNone + full},
        {"a question without a file", Item("mimetype", "a/b") + "\n", kNone},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Served served = ServeAll(row.questions);
        EXPECT_EQ(served.answers, row.answers);
        EXPECT_EQ(served.failure, "");
    }
}

TEST(RecollHandler, EndsWhereTheFormIsBroken) {
    const std::string start = Item("Filename", "/shelf/gone") + "\n";
    for (const char* question : {"Filename", "Filename: \n\n", "Filename: -1\n", "Filename: 3x\nabc\n",
                                 "Filename: 9\nabc", "Filename: 99999999999\nabc\n", "Filename: 3\nabc"}) {
        const Served served = ServeAll(start + question);
        EXPECT_EQ(served.answers, kNone) << question;
        EXPECT_NE(served.failure, "") << question;
    }
}

TEST(KFileMetaDataHandler, AnswersWithTextsThatTheIndexerSearches) {
    const struct {
        const char* what;
        const char* question;
        const char* answer;
    } rows[] = {
        {"a document with everything",
         "{\n  \"mimetype\": \"application/x-wqf\",\n  \"path\": \"/shelf/full.wqf\"\n}\n",
         R"({"status":"OK","error":"","properties":{"typeInfo":"Document","title":"Ein Tor",)"
         R"("author":"Ada Lovelace, Grete Müller","keywords":"R&D, Harbour","generator":"Builder 4.2",)"
         R"("description":"Ein Tor\nmit Turm",)"
         R"("text":"Ein Tor\nmit Turm\n<b> & \"c\"\nAda Lovelace\nGrete Müller\n4100 42"}})"},
        {"one that tells nothing", R"({"path": "/shelf/bare.part.wqfml"})",
         R"({"status":"OK","error":"","properties":{"typeInfo":"Document","title":"bare.part"}})"},
        {"one that is not there", R"({"path": "/gone"})",
         "{\"status\":\"Error\",\"error\":\"no such \\\"file\\\": \xEF\xBF\xBD\",\"properties\":{}}"},
        {"no path", R"({"path": 1})", R"({"status":"Error","error":"the question names no path","properties":{}})"},
        {"no object", "[[[", R"({"status":"Error","error":"the question names no path","properties":{}})"},
        {"nothing", "", R"({"status":"Error","error":"the question names no path","properties":{}})"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(AnswerKFileMetaData(row.question, ReadShelf), row.answer + std::string("\n")) << row.what;
    }
}

}  // namespace ZEMA::testing
