// Documents as the file indexer of KDE asks for them.
#pragma once

#include <string>

#include "host/handlers/DocumentTexts.h"

namespace ZEMA {

// Answers one question, `{"path": PATH, ...}`, by one object: {"status", "error", "properties"}. A document that was
// not imported has no properties, and so has a question that cannot be read.
//
// A property has one text: the indexer shows lists, but searches texts only. Properties that it does not know by name
// are dropped, so what has none of its own stands in "text".
std::string AnswerKFileMetaData(const std::string& question, const ReadDocument& read);

}  // namespace ZEMA
