// A directory inside a mounted archive.
#pragma once

#include "storage/Directory.h"
#include "storage/ElementFacts.h"
#include "storage/zip/ZipStorageVolume.h"
#include "storage/zip/ZipTreeNode.h"

namespace ZEMA {

// Works on one node of the archive's tree; several directories may stand for the same node and then share its walk over
// files. Flags and times that are set are kept in memory only. Whatever changes the archive needs one that was opened
// for writing. A directory whose node was erased answers every operation with false.
//
// Ownership: holds the volume and the node.
class ZipStorageDirectory : public Directory, public ElementFacts {
public:
    ZipStorageDirectory(const String& name, Directory* parent, ZipStorageVolume* volume, ZipTreeNode* node);

    bool SetFlags(const ElementFlags* flags) override;

    ElementFlags GetFlags() override;
    bool SetTimes(const ElementTimes* times) override;
    ElementTimes GetTimes() override;

    Directory* CreateChildObject(const String& name) override;
    bool CreateDirectory(const String& name) override;
    File* OpenFile(const String& name, const AccessStyle* style, bool create, const std::uint64_t* truncateTo) override;

    // Refused while any member at or below the name is open; without `force` also when one of them does not let entries
    // be changed.
    bool Remove(const String& name, bool force) override;

    bool GetChildFlags(const String& name, ElementFlags* flags) override;
    bool SetChildFlags(const String& name, const ElementFlags* flags) override;
    bool GetChildTimes(const String& name, ElementTimes* times) override;
    bool SetChildTimes(const String& name, const ElementTimes* times) override;

    bool IsEmpty() override;
    bool HasDirectoryPath(const BasicArray<String>& components) override;
    bool HasFile(const String& name) override;
    bool List(const String& pattern, Listing* listing) override;

    // False where a file has members below it, which go with it. What has no node stays in the archive.
    bool ShowsAllOf(const String& name) override;

    void FindFirstFile() override;
    RefPointer<File> OpenFoundFile(const AccessStyle* style, const std::uint64_t* truncateTo) override;
    void FindNextFile() override;
    bool IsFindDone() override;
    bool IsFindActive() override;
    void EndFind() override;

    ZipStorageVolume& Volume() const { return *volume_; }
    ZipTreeNode& Node() const { return *node_; }

protected:
    ~ZipStorageDirectory() override;

private:
    RefPointer<ZipStorageVolume> volume_;
    RefPointer<ZipTreeNode> node_;
};

}  // namespace ZEMA
