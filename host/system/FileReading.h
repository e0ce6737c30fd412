// Whole files as bytes, for what the program itself needs: a bundle's files, lists of paths.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace ZEMA {

// Each gives null, and in `problem` what the system said, when the bytes cannot be read.

// A regular file of at most `limit` bytes. Anything else is refused at once and never waited for.
std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t limit, std::string& problem);

// Everything up to the end of a file, pipe or device; "-" is standard input.
std::optional<std::string> ReadStream(const std::string& path, std::string& problem);

// Why a path names no regular file, or the empty text. Opens nothing; links are followed.
std::string WhyNoFile(const std::string& path);

// Whether the path goes on behind the name of a regular file, or of a link to one, as paths into archives do.
bool LeadsIntoFile(const std::string& path);

// Why a document that should be a readable regular file is none, or the empty text. Nothing but a regular file is
// opened; links are followed.
std::string WhyUnreadable(const std::string& path);

}  // namespace ZEMA
