// Documents as Recoll's indexer asks for them.
#pragma once

#include <functional>
#include <istream>
#include <string>
#include <string_view>

#include "host/handlers/DocumentTexts.h"
#include "host/system/Failure.h"

namespace ZEMA {

// Serves one indexer, which keeps its handler running (Recoll's "execm"), until `input` ends.
//
// A question is lines of the form `Name: COUNT`, each with COUNT bytes behind its line end, and an empty line. An
// answer has the same form: the page of a document, or that there is none, after which the next question is served like
// any other.
//
// `write` receives each answer at once and whole; it is false when nobody takes it any more, and the service then ends.
// A question that breaks the form is Damaged and ends it too: nothing tells where the next one would begin.
Failure ServeRecoll(std::istream& input, const std::function<bool(std::string_view answer)>& write,
                    const ReadDocument& read);

// The document as the page that Recoll indexes: HTML in UTF-8, with a field for each value.
std::string RecollPageOf(const DocumentTexts& texts);

}  // namespace ZEMA
