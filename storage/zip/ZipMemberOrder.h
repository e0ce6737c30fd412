// The members of an archive in one of their two orders.
#pragma once

#include "storage/zip/ZipFileHeader.h"

namespace ZEMA {

// A list through links that stand in the members themselves, so that a member is taken out without a search. Holds no
// references: whoever takes a member out of both orders lets go of it.
template <ZipFileHeader::Links ZipFileHeader::*kLinks>
class ZipMemberOrder {
public:
    ZipFileHeader* First() const { return first_; }
    ZipFileHeader* Last() const { return last_; }
    static ZipFileHeader* Next(const ZipFileHeader* member) { return (member->*kLinks).next; }
    static ZipFileHeader* Previous(const ZipFileHeader* member) { return (member->*kLinks).previous; }

    void PushBack(ZipFileHeader* member) {
        (member->*kLinks) = {last_, nullptr};
        (last_ == nullptr ? first_ : (last_->*kLinks).next) = member;
        last_ = member;
    }

    void Remove(ZipFileHeader* member) {
        const ZipFileHeader::Links links = member->*kLinks;
        (links.previous == nullptr ? first_ : (links.previous->*kLinks).next) = links.next;
        (links.next == nullptr ? last_ : (links.next->*kLinks).previous) = links.previous;
        (member->*kLinks) = {};
    }

private:
    ZipFileHeader* first_ = nullptr;
    ZipFileHeader* last_ = nullptr;
};

}  // namespace ZEMA
