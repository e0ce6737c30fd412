// Every limit that one document, or the reading of many, is held to. What happens past each is in the architecture
// page.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace ZEMA {

// In the markup.

// Declarations that cost more than their own size, which a document may have: attributes, whose whole list the parser
// walks through for every element, and entities that name others. Such entities nested one in the other as often take a
// small part of any stack.
inline constexpr std::uint32_t kMostDeclarations = 512;

// What a document may come to, for each of its bytes and beside them. Written out it comes to twice its size at most,
// when every byte becomes two in UTF-8; ten defaults for each short element make it about six times.
inline constexpr std::uint64_t kContentRatio = 8;
inline constexpr std::uint64_t kContentAllowance = std::uint64_t{4} << 20;

// An index that a document writes in ten bytes could ask for an array of 2^32 entries. So the entries that indices add
// in a whole load are no more than the text has bytes, and these besides.
inline constexpr std::uint64_t kIndexAllowance = 65536;

// In an archive. What the fields of its records can hold is in storage/zip/ZipFormat.h.

// Files and directories in memory: a name of 65,535 bytes makes half as many directories, each of which takes a
// hundred times the two bytes that ask for it.
inline constexpr std::size_t kMostArchiveNodes = 1000000;

// No deflate stream unpacks to more than this many times its size, and short ones to some more. A member that claims
// more is not unpacked, so that no memory is taken for a claim.
inline constexpr std::uint64_t kMostExpansion = 1032;
inline constexpr std::uint64_t kExpansionSlack = 65536;

// Of a document that is read by the program, by a worker or by itself.

// The slowest documents that people have take seconds; the default leaves room for a slow disk.
inline constexpr std::chrono::seconds kDocumentTime(60);

// Above what a process has before its first document. Markup of nothing but the shortest elements takes some
// thirty-five times its size.
inline constexpr std::uint64_t kDocumentMemory = std::uint64_t{2} << 30;

// What a worker may answer: a hostile worker could send for ever, and a program that keeps it would grow as long.
inline constexpr std::size_t kLargestAnswer = std::size_t{256} << 20;

// Answers that wait for an earlier one, together. One document may take a minute, in which others give thousands.
inline constexpr std::size_t kHeldAnswers = std::size_t{64} << 20;

// Two documents that got stuck are enough to know that a file system does not answer: each costs all of its time.
inline constexpr int kStuckDocuments = 2;

}  // namespace ZEMA
