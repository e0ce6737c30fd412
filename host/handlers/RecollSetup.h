// The program's lines in the configuration of Recoll.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/system/Failure.h"

namespace ZEMA {

// Where the lines come from and where they go: two folders with files of the same names.
struct RecollFolders {
    std::string lines;          // as the program brings them along
    std::string configuration;  // the user's; it need not be there
};

// The lines beside this program, and the configuration `given`, or where that is empty the user's own: $RECOLL_CONFDIR,
// or else .recoll in the home folder.
Result<RecollFolders> FindRecollFolders(const std::string& given);

// Enters the lines between two marks in each file, or brings them up to date. Returns the paths of the files that were
// changed; none where everything was as it should be.
//
// Everything is read and looked at before anything is written, and each file changes at once or not at all. Refused
// where another field has the place of one of ours.
Result<std::vector<std::string>> EnterRecollLines(const RecollFolders& folders);

// Takes them out: each file is again byte for byte what it was, and those that were not there are gone, and so is a
// folder in which nothing is left. What the user wrote between the marks meanwhile stays, under the heading of its
// section.
Result<std::vector<std::string>> RemoveRecollLines(const RecollFolders& folders);

// A file of the configuration, null where it is not there, with lines of ours, and without those that are between the
// marks. New ones come in front of everything, or behind it.
enum class RecollPlace { Front, Back };
std::string WithRecollLines(const std::optional<std::string>& file, const std::string& lines, RecollPlace place);
std::optional<std::string> WithoutRecollLines(const std::optional<std::string>& file, const std::string& lines);

}  // namespace ZEMA
