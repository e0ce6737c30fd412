// What a back end can tell of its elements beside the operations of Directory.
#pragma once

#include <cstdint>

#include "core/BasicArray.h"
#include "storage/Directory.h"

namespace ZEMA {

// Which file or directory of a disk something is, by whatever path it was reached.
struct ElementIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;

    friend bool operator==(const ElementIdentity&, const ElementIdentity&) = default;
};

// A second base of directories whose storage knows more than their names say. Copying and moving ask for it.
//
// Threads: called with StorageMutex held, as the operations of Directory are.
class ElementFacts {
public:
    // What the name of a child leads to, links followed; of the directory itself for an empty name. False, with
    // `identity` as it was, where nothing is there or the storage cannot tell.
    virtual bool GetIdentity(const String& name, ElementIdentity* identity);

    // This directory and those that it lies in on the disk, whatever links its path goes through.
    virtual bool GetEnclosing(BasicArray<ElementIdentity>* enclosing);

    // Whether opening the child, or listing it and all below it, shows everything that its removal would take away.
    virtual bool ShowsAllOf(const String& name) = 0;

protected:
    ~ElementFacts() = default;
};

// The identity of the directory itself; false where its storage cannot tell.
bool GetIdentity(Directory& directory, ElementIdentity* identity);

// Where a directory stands: the next one up whose storage can tell which it is, or else the top of the tree, and the
// names from there.
class Place {
public:
    explicit Place(Directory& directory);

    // The directories that it lies in on the disk, itself included where it is one; none where the storage cannot tell.
    BasicArray<ElementIdentity> Enclosing() const;

    // Two objects may stand for one place, and two paths may lead there. Names are compared without regard to case.
    bool Is(const Place& other) const;
    bool IsInside(const Place& outer) const;  // or there

private:
    bool SharesBase(const Place& other) const;
    bool StartsWith(const Place& other) const;

    Directory* base_;
    bool hasIdentity_ = false;
    ElementIdentity identity_;  // of the base
    BasicArray<String> names_;  // from the place up to below the base
};

}  // namespace ZEMA
