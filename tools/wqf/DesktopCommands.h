// The commands for a desktop's own programs: what each is asked for, and the function that does it.
#pragma once

#include <string>

namespace ZEMA {

// The programs that find documents, and that we know how to answer.
enum class Indexer { Recoll, KFileMetaData };

// wqf handler: answers an indexer on standard output, where nothing else goes.
int RunHandler(Indexer indexer);

// wqf setup recoll: enters the handler in a user's configuration, or takes it out.
struct SetupOptions {
    std::string configuration;  // its folder; empty for the user's own
    bool remove = false;
};
int RunSetupRecoll(const SetupOptions& options);

}  // namespace ZEMA
