// The repair of archives that the storage tree does not take, or not whole.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/system/Failure.h"

namespace ZEMA {

// How far a repair may go.
struct MendOptions {
    bool drop = false;    // what stands in front or belongs to no member, and the comment
    bool dryRun = false;  // only finds out what would be done
    bool force = false;   // as for ArchiveRewrite
    std::function<void()> tellWaiting = {};
};

// What was found in an archive, as sentences that go on behind its name.
struct MendReport {
    std::vector<std::string> faults;     // what the repair puts right; none in an archive that is fine
    std::vector<std::string> obstacles;  // what it does not: then the archive is left alone
};

// Writes the archive anew as its format wants it, unless it is fine: it mounts, and every member passes the checks that
// are made when it is opened. The directory is believed where it proves right: the members' checksums are compared.
// Members of methods that are not read are packed anew, all others are taken over as they are. What stands in front of
// the archive stays there, with all offsets corrected.
//
// Fails, and leaves the archive as it was, where it cannot be read or written.
Result<MendReport> MendArchive(const std::string& path, const MendOptions& options);

// The contents of a member of an archive that is not fine, as MendArchive would write it; nothing is written. The name
// is found in any case of ASCII letters, and must be there once. What is wrong with other members does not matter.
//
// Fails as Refused for an archive that is fine, and as Limit where there are more bytes than `limit`.
Result<std::string> ReadMended(const std::string& path, std::string_view name, std::size_t limit);

}  // namespace ZEMA
