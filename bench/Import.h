// The import of one document through the plug-in's own operation.
#pragma once

#include <filesystem>

namespace bench {

// Calls GetMetadataForFile with a fresh dictionary; throws std::runtime_error when it answers false.
void RunImport(const std::filesystem::path& document);

}  // namespace bench
