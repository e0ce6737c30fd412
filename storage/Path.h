// A name in a directory, not yet opened.
#pragma once

#include "storage/Directory.h"

namespace ZEMA {

// Names an element by its container. Without a parent it is read as below the root, and opening it gives null.
class Path {
public:
    Path() = default;
    explicit Path(const String& path) { Append(path); }  // from the root
    explicit Path(const DirectoryElement& element) { Set(element); }
    explicit Path(const Directory::OpenArgs& asked);  // what a storage factory is being asked for
    Path(const Path&) = default;
    Path(Path&&) noexcept = default;
    Path& operator=(const Path&) = default;
    Path& operator=(Path&&) noexcept = default;
    virtual ~Path();

    const String& Name() const { return name_; }
    Directory* Parent() const { return parent_.Get(); }

    // Takes the element's name and parent.
    void Set(const DirectoryElement& element);

    // Joins the present name and the new components, normalises them, and follows all but the last one from the parent
    // (or from the root). When the last one is "..", all are followed and the path names the directory reached. When
    // none is left, the name is empty and the parent stays: the path names that.
    void Append(const String& path);
    void Append(const BasicArray<String>& components);

    // Puts `suffix` behind the name.
    void AppendToName(const String& suffix) { name_.Append(suffix); }

    RefPointer<Directory> OpenDirectory(bool create) const;
    RefPointer<File> OpenFile(const AccessStyle* style, bool create) const;
    bool IsFile() const;

private:
    String name_;
    RefPointer<Directory> parent_;
};

}  // namespace ZEMA
