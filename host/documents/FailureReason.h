// Why a document did not load, for the people who have it.
#pragma once

#include <string>
#include <vector>

#include "host/system/Failure.h"
#include "importer/DocumentLoad.h"

namespace ZEMA {

// The attempt of the format that the document claims to be of. What another loader says of it is mostly that the
// version is not its own.
const LoadAttempt& ClaimedAttempt(const std::vector<LoadAttempt>& attempts);

// One sentence, made of what the loaders say and of what the file proves to be when it is looked at once more: what it
// is instead of a document, where its markup is malformed, what is wrong with the archive. It recommends `wqf mend`
// where that helps.
//
// `path` is the document's, any bytes, and may lead into archives. There is an attempt, and none loaded the document.
Failure WhyNotLoaded(const std::string& path, const std::vector<LoadAttempt>& attempts);

}  // namespace ZEMA
