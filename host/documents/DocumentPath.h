// Where a document lies, in the form in which the plug-in and the storage tree take it.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>

#include "host/system/Failure.h"
#include "host/system/FileDescriptor.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {

// What a path leads to.
enum class DocumentKind {
    File,       // with something in it, also in an archive
    EmptyFile,  // never to be mounted: that would write the records of an empty archive into it
    Other,      // a folder, a pipe, nothing, ...; or the way there leads through what is no archive
};

// Opens nothing for changes. `path` is bytes and may lead into archives.
DocumentKind KindOfDocument(const std::string& path);

// An absolute path as a text. A path of the system is bytes, and not all bytes are a text; where these are none, the
// file is opened and the text leads to its descriptor.
//
// Ownership: keeps the descriptor, and with it the meaning of the text.
class DocumentPath {
public:
    static Result<DocumentPath> Of(const std::string& path);

    CFStringRef Text() const { return text_.Get(); }

private:
    FileDescriptor file_;
    Foundation::CFPointer<CFStringRef> text_;
};

}  // namespace ZEMA
