// A reader of archives that accepts nothing but flawless ones, for checking what the system wrote.
#pragma once

#include <map>
#include <string>

namespace ZEMA::testing {

// The members by their stored names, unpacked. Throws std::runtime_error with a reason unless every record is where the
// others say, both headers of each member agree, no two members share bytes, nothing is left between the records of the
// directory, and every checksum fits. Members with data descriptors may have them in any form; gaps between members are
// allowed.
std::map<std::string, std::string> ReadStrictly(const std::string& archive);

}  // namespace ZEMA::testing
