// The least that any importer has to do with a document: what ours is measured against.
#pragma once

#include <filesystem>

namespace bench {

// Reads the archive, inflates its first member with zlib and parses it with expat without handlers. Throws
// std::runtime_error when a step fails. Knows just enough of ZIP for the documents that SampleDocument makes.
void RunFloor(const std::filesystem::path& document);

}  // namespace bench
