#include <CoreServices/CoreServices.h>

#include "platform/CoreFoundation/StringObject.h"

namespace {

using ZEMA::CF::ConstantText;

constinit const ConstantText authors("kMDItemAuthors");
constinit const ConstantText creator("kMDItemCreator");
constinit const ConstantText description("kMDItemDescription");
constinit const ConstantText keywords("kMDItemKeywords");
constinit const ConstantText version("kMDItemVersion");

}  // namespace

// Ready before any constructor runs: a plug-in may use them while it is being loaded.
constinit const CFStringRef kMDItemAuthors = &authors.head;
constinit const CFStringRef kMDItemCreator = &creator.head;
constinit const CFStringRef kMDItemDescription = &description.head;
constinit const CFStringRef kMDItemKeywords = &keywords.head;
constinit const CFStringRef kMDItemVersion = &version.head;
